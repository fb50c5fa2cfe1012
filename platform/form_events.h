// What a host calls on the form. User-interface thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/exit_status.h"
#include "platform/run_report.h"

namespace platform {

inline constexpr std::int16_t kEnterKey = 13;

/// A word of the command language, and what it stands for in a few words.
struct CommandWord {
    std::string word;
    std::string note;
};

/// What can come next in a command.
struct FollowingWords {
    std::vector<CommandWord> words;
    bool paths = false;  // names of files and folders
};

class FormEvents {
  public:
    virtual ~FormEvents() = default;

    virtual void Form_Load() = 0;
    virtual void Form_Unload() = 0;
    virtual void cmdGo_Click() = 0;
    virtual void cmdStop_Click() = 0;
    virtual void txtCmd_KeyPress(std::int16_t key) = 0;
    virtual void Timer1_Timer() = 0;

    /// Go with words that are split already (a shell's arguments; one word is enough).
    virtual void RunCommand(const std::vector<std::string>& words) = 0;
    /// RunCommand for words that only list, show or save a session: a listing word, "-input" and a
    /// file, or "--save-session". While the form is busy they are answered beside the run, which
    /// goes on with its own settings.
    virtual void RunListing(const std::vector<std::string>& words) { RunCommand(words); }
    /// What the language has after `option`, in any case; after "" the options themselves.
    virtual FollowingWords WordsAfter(const std::string& /*option*/) const { return {}; }
    /// Every setting back to not given, as in a window that has just been opened. False, and
    /// nothing is changed, while the form is busy.
    virtual bool NewSession() { return false; }
    /// Pauses the session's encoder, or lets it go on; nothing where none runs. Its state follows.
    virtual void PauseOrResume() {}
    /// Whether an encoder runs or a folder is being walked.
    virtual bool IsBusy() const = 0;
    /// How the last command ended.
    virtual ExitStatus Status() const = 0;

    // The same and more as values, for hosts that tell it to programs.
    virtual RunProgress Progress() const { return {}; }
    /// Of the last command, once the form is not busy any more.
    virtual CommandReport Report() const { return {}; }
    /// The listener must outlive the form or be taken away with null.
    virtual void SetRunListener(RunListener* /*listener*/) {}
};

}  // namespace platform
