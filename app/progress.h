// What the window shows of a run: bar, percent, pass, times and rates.
#pragma once

#include <cstdint>

#include "cli/encode_settings.h"
#include "platform/session_state.h"
#include "platform/widgets.h"

namespace app {

/// Everything handed over must outlive the object. User-interface thread.
class Progress {
  public:
    Progress(platform::FormWindow& window, platform::SessionState& session,
             cli::EncodeSettings& settings)
        : window_(window), session_(session), settings_(settings) {}

    /// Readies bar, pass counters and labels for a run of the session's sources. With an input file
    /// the -duration setting becomes the media length. Throws Error as the sources do.
    void setupProgressBar();

    /// One second of a run: labels, bar and pass from the statistics, and the end of a screen or
    /// device capture whose -duration has passed; seconds while it is paused do not count. Ends
    /// quietly without an encoder and when the encoder fails to answer.
    void Tick();
    /// The labels alone, as the statistics are now; quietly too.
    void ShowFigures();

    /// Labels, bar and passes as before the first run.
    void Clear();

    std::int16_t CurrentPass() const { return g_nCurrentPass; }
    std::int16_t TotalPasses() const { return g_nTotalPasses; }

  private:
    void ShowRates(platform::WMEncStatistics& statistics);
    void ShowPercent(platform::WMEncStatistics& statistics, std::int32_t length_s);
    bool IsCapture() const;
    void CountCaptureSecond();

    platform::FormWindow& window_;
    platform::SessionState& session_;
    cli::EncodeSettings& settings_;

    std::int16_t g_nTotalPasses = 1;
    std::int16_t g_nCurrentPass = 1;
    std::int32_t g_nCaptureSeconds = 0;  // ticks of the running capture
};

}  // namespace app
