// The console executable, from its words to its exit status.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/form_events.h"
#include "platform/host/host_factory.h"
#include "platform/host/program_info.h"
#include "platform/widgets.h"

namespace platform::host {

/// Makes the form for a window and a factory, which outlive it.
using FormMaker = std::function<std::unique_ptr<FormEvents>(FormWindow&, Factory&)>;

struct ConsoleStreams {
    int input = 0;
    int output = 1;
    int notes = 2;
};

/// Runs the words as one command, or, for the word "-", each line of the input as one; without
/// words, reads commands line by line when input and notes are a terminal. A first word "--json"
/// turns the output into JSON, the pane's text then goes to the notes. Returns the exit status: the
/// form's (of an input's lines the highest), 1 without a command, 2 also when output was lost, 130
/// after a signal or when the reader of the output went away.
int RunConsole(const std::vector<std::string>& words, const ProgramInfo& program,
               EngineMakers makers, const FormMaker& make_form, ConsoleStreams streams = {});

}  // namespace platform::host
