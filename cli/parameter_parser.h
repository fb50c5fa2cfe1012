// Turns the words of one command into values of the settings record.
//
// A command is parsed in five steps: a pre-pass that reads configuration files and notes the text
// to save, listing words that stand alone, file information of an input that stands alone, the
// options one after the other, and the configuration file to write. A configuration file's line
// goes through all five steps itself.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cli/command_actions.h"
#include "cli/encode_settings.h"
#include "cli/option_table.h"
#include "cli/value_readers.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"

namespace cli {

/// User-interface thread. All references outlive the parser; the session's file system must be
/// there whenever a command names a configuration file.
class ParameterParser {
  public:
    ParameterParser(EncodeSettings& settings, ValueReaders& readers, platform::OutputPane& pane,
                    CommandActions& actions, platform::SessionState& state);

    /// True: every word was accepted and the session is to be built. False: nothing is to be
    /// encoded; a refused command has left one line on the pane (a performance level that does not
    /// exist leaves none), and what it set before stays set. Throws platform::Error when a text
    /// option stands last without its value and when a configuration file cannot be read or
    /// written.
    bool ParseParameters(const std::vector<std::string>& words);

    /// After a false result: whether the command was refused; otherwise it listed or showed
    /// something, as it was asked to.
    bool Refused() const;

    /// Names of the options that stood in the last command or its configuration files, in lower
    /// case; up to the word that refused it.
    const std::set<std::string_view>& TypedOptions() const { return typed_options_; }

  private:
    enum class Outcome { Accepted, Shown, Refused };
    struct Call;  // one run through the five steps: the command's, or a configuration file's

    Outcome Parse(const std::vector<std::string>& words, const Call* outer);
    Outcome PrePass(Call& call);
    Outcome ReadConfig(Call& call);
    Outcome ShowInputInfo(const Call& call);
    bool Save(const Call& call);
    bool MainPass(Call& call);
    // Each takes the word after arg_index, moves arg_index onto it, and on failure has written why.
    bool TakeValue(const OptionValue& value, std::size_t option_index, Call& call);
    bool TakeText(const OptionValue& value, std::size_t option_index, const Call& call);
    bool TakeInteger(const OptionValue& value, std::size_t option_index, const Call& call);
    bool TakeFloat(const OptionValue& value, std::size_t option_index, const Call& call);
    bool TakeEndMark(const OptionValue& value, std::size_t option_index, const Call& call);
    bool TakeSaveName(std::size_t option_index, Call& call);
    bool TakeLoadName(std::size_t option_index, const Call& call);

    EncodeSettings& settings_;
    ValueReaders& readers_;
    platform::OutputPane& pane_;
    CommandActions& actions_;
    platform::SessionState& state_;
    std::size_t arg_index = 0;  // the word looked at; one for all nested calls, see PrePass
    Outcome outcome_ = Outcome::Accepted;
    std::set<std::string_view> typed_options_;
};

}  // namespace cli
