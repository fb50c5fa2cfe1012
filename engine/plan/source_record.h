// Sources as they were set up, as plain values.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/plan/device.h"
#include "engine/plan/media_file_info.h"
#include "engine/plan/screen_area.h"

namespace engine {

/// A device or a screen that a source records.
struct CaptureInput {
    Device device;
    ScreenArea area;         // of a screen
    ScreenSize screen_size;  // when the input was given; 0 x 0 until the desktop hands it out
};

/// Where a source reads from: a file or a capture.
struct SourceInput {
    std::string input;      // as it was given
    std::string scheme;     // "" = a file
    std::string host_path;  // of a file
    std::optional<MediaFileInfo> media;
    std::optional<CaptureInput> capture;
    std::string area = {};  // of a screen, where it is not the program's choice: as ParseScreenArea

    bool IsSet() const { return !input.empty(); }
    bool IsFile() const { return media.has_value(); }
    /// Named, but not found when it was: a session file may come before its sources.
    bool LacksSource() const { return IsSet() && !media && !capture; }
};

/// What every source has. Units and meanings are those of the object model's properties.
struct SourceRecord {
    SourceInput input;
    std::int32_t mark_in_ms = 0;
    std::int32_t mark_out_ms = 0;  // 0 = to the end
    std::int32_t pre_process_pass = 0;
};

struct AudioSourceRecord : SourceRecord {
    std::int32_t content_mode = 0;
    std::string content_edl;
};

struct VideoSourceRecord : SourceRecord {
    std::int32_t optimization = 0;
    std::uint32_t pixel_format = 0;   // 0 = the source's own
    std::int32_t pixel_aspect_x = 0;  // both 0 = the source's own shape
    std::int32_t pixel_aspect_y = 0;
    std::int32_t left_margin = 0;
    std::int32_t right_margin = 0;
    std::int32_t top_margin = 0;
    std::int32_t bottom_margin = 0;
    std::int32_t capture_rate = 30'000;  // thousandths
    std::int32_t still_duration_ms = 10'000;

    bool IsStill() const { return input.IsFile() && input.media->video->still; }
};

}  // namespace engine
