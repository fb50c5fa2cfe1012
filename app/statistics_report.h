// The report of a finished run and the description of a file, written to the output pane.
#pragma once

#include <chrono>
#include <functional>

#include "cli/encode_settings.h"
#include "platform/factory.h"
#include "platform/output_pane.h"
#include "platform/session_state.h"
#include "platform/widgets.h"

namespace app {

using WallTime = std::chrono::system_clock::time_point;
/// Tells the date and time of day; user-interface thread.
using WallClock = std::function<WallTime()>;

/// Everything handed over must outlive the report. User-interface thread.
class StatisticsReport {
  public:
    StatisticsReport(platform::FormWindow& window, platform::Factory& factory,
                     platform::SessionState& session, const cli::EncodeSettings& settings,
                     platform::OutputPane& pane)
        : window_(window), factory_(factory), session_(session), settings_(settings), pane_(pane) {}

    /// Writes a block for each source that the session has and an overall block, from the
    /// statistics of the session's encoder. False when they could not all be read: the lines so far
    /// stay, and a modal message box has said that there is no output file.
    bool ShowStatistics(WallTime start, WallTime end);

    /// Writes the description of the input file. Throws Error as platform::MediaInfo does.
    void PrintFileInfo();

  private:
    void WriteAudio();
    void WriteVideo();
    void WriteOverall(WallTime start, WallTime end);
    void WriteFile(platform::WMEncStatistics& statistics);
    void WriteNetwork(platform::WMEncStatistics& statistics);

    platform::FormWindow& window_;
    platform::Factory& factory_;
    platform::SessionState& session_;
    const cli::EncodeSettings& settings_;
    platform::OutputPane& pane_;
};

}  // namespace app
