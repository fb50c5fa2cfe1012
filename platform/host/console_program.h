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

/// Runs the words as one command; without words, reads commands line by line when input and notes
/// are a terminal. Returns the exit status: the form's, 1 without a command, 2 also when output
/// was lost, 130 after a signal or when the reader of the output went away.
int RunConsole(const std::vector<std::string>& words, const ProgramInfo& program,
               EngineMakers makers, const FormMaker& make_form, ConsoleStreams streams = {});

}  // namespace platform::host
