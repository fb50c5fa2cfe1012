// How runs and commands went, as plain values for hosts that report them to programs.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/encoder.h"
#include "platform/error.h"

namespace platform {

enum class CommandEnd {
    Shown,      // listed, explained or told something: nothing was to be encoded
    Completed,  // encoded to the end
    Stopped,    // encoded up to a stop that was asked for
    Refused,    // wrong, or impossible to set up: nothing was encoded
    Failed,     // ended in an error while running
};

/// Whether somebody has to be told why.
constexpr bool IsFailure(CommandEnd end) {
    return end == CommandEnd::Refused || end == CommandEnd::Failed;
}

struct StreamReport {
    std::string codec;  // display name
    OutputStats totals;
};

/// One file's run.
struct FileReport {
    CommandEnd end = CommandEnd::Shown;
    std::string input;
    std::string output;        // absolute; "" without one
    std::int64_t seconds = 0;  // from start to end
    std::optional<StreamReport> audio;
    std::optional<StreamReport> video;
    std::int32_t average_bit_rate_bps = 0;
    std::optional<FileArchiveStats> file;
    NetworkStats network;
    std::optional<ErrorReport> error;
};

/// A whole command.
struct CommandReport {
    FileReport last;  // of a folder: without streams and file
    bool is_folder = false;
    int files_completed = 0;
    int files_failed = 0;
    /// How many files of a folder were no media that walks take, by their extension in lower case,
    /// ".txt"; "" = without one.
    std::map<std::string, int> files_skipped;
    /// Options of earlier commands that this one used too, with their values.
    std::vector<std::string> carried_over;
    /// What the person should know although all went well, a sentence each.
    std::vector<std::string> notices;
    /// What may help the person whose command was refused; "" where nothing comes to mind.
    std::string hint;
};

/// A run as it stands.
struct RunProgress {
    EncoderState state = EncoderState::Stopped;
    std::string input;
    std::string output;           // absolute; "" without one
    std::int64_t encoded_ms = 0;  // media time of the pass
    std::int64_t length_ms = 0;   // of the media to be encoded; 0 = not known, or a recording
    float percent = 0;            // 0..100
    int pass = 1;
    int passes = 1;
    OutputStats total;
    std::int64_t dropped_frames = 0;
    std::int64_t dropped_bytes = 0;
    NetworkStats network;
};

/// User-interface thread.
class RunListener {
  public:
    virtual ~RunListener() = default;
    /// A file of a folder has come to its end.
    virtual void OnFileEnd(const FileReport& report) = 0;
    /// The session's encoder is in a new state, which the form has shown already. Stopped also when
    /// the session lets go of an encoder that still runs.
    virtual void OnStateChange(EncoderState /*state*/) {}
    /// One more of the running command's notices.
    virtual void OnNotice(const std::string& /*text*/) {}
    /// A command that encoded something has come to its end, a folder with all its files.
    virtual void OnCommandEnd(const CommandReport& /*report*/) {}
    /// A command has ended in an error before anything was encoded.
    virtual void OnCommandRefused(const CommandReport& /*report*/) {}
};

}  // namespace platform
