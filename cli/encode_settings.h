// The one record of everything that commands have said so far: a field an option, named after it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace cli {

struct PushSettings {
    std::string server_name = {};
    std::string publishing_point = {};
    std::string template_name = {};  // optional
    bool operator==(const PushSettings&) const = default;
};

/// Milliseconds from the start of the file.
struct TimeSettings {
    std::optional<std::int32_t> start = {};
    std::optional<std::int32_t> end = {};  // 0 = to the end of the file
    bool operator==(const TimeSettings&) const = default;
};

/// Coefficients as typed; the encoder gets them negated.
struct FoldDownSettings {
    std::optional<std::int32_t> surround = {};
    std::optional<std::int32_t> center = {};
    std::optional<std::int32_t> lfe = {};
    bool operator==(const FoldDownSettings&) const = default;
};

struct PixelRatioSettings {
    std::optional<std::int32_t> x = {};
    std::optional<std::int32_t> y = {};
    bool operator==(const PixelRatioSettings&) const = default;
};

/// Pixels cut off each side of the source's picture.
struct ClipSettings {
    std::optional<std::int32_t> left = {};
    std::optional<std::int32_t> top = {};
    std::optional<std::int32_t> right = {};
    std::optional<std::int32_t> bottom = {};
    bool operator==(const ClipSettings&) const = default;
};

/// What was not given is empty: no number, no text, no flag. Nothing resets the record between two
/// commands: a value stays in force until an option overwrites it.
struct EncodeSettings {
    // Input and output
    std::string input = {};         // file or folder
    std::string output = {};        // file or folder
    std::string outputstring = {};  // appended to every output name of a folder
    std::string wme = {};           // session file
    std::optional<std::int32_t> adevice = {};
    std::optional<std::int32_t> vdevice = {};
    bool audioonly = false;
    bool videoonly = false;
    std::optional<std::int32_t> broadcast = {};  // port
    PushSettings push = {};
    TimeSettings time = {};
    std::optional<double> duration =
        {};  // seconds; typed as a whole number, a run on a file leaves fractions
    bool silent = false;
    std::int32_t verbose = 2;  // stored only
    std::string title = {};
    std::string author = {};
    std::string copyright = {};
    std::string description = {};
    std::string rating = {};

    // Profiles
    std::string profile = {};  // code of a predefined profile, its case as typed
    std::string loadprofile = {};
    std::string saveprofile = {};
    std::optional<std::int32_t> maxpacket = {};  // bytes
    std::optional<std::int32_t> minpacket = {};  // bytes

    // Audio
    std::string a_codec = {};                        // upper case
    std::optional<std::int32_t> a_mode = {};         // 0..4
    std::string a_setting = {};                      // "48_44_2", "Q90_44_2"
    std::optional<std::int32_t> a_peakbitrate = {};  // bits per second
    std::optional<std::int32_t> a_peakbuffer = {};   // milliseconds
    std::optional<std::int32_t> a_content = {};      // 0..2
    std::string a_contentedl = {};
    FoldDownSettings a_folddown6to2 = {};

    // Video
    std::string v_codec = {};                    // upper case
    std::optional<std::int32_t> v_mode = {};     // 0..4
    std::optional<std::int32_t> v_bitrate = {};  // bits per second
    std::optional<std::int32_t> v_buffer = {};   // milliseconds
    std::optional<std::int32_t> v_width = {};    // pixels
    std::optional<std::int32_t> v_height = {};   // pixels
    std::optional<float> v_framerate = {};       // thousandths of a frame per second
    std::optional<std::int32_t> v_keydist = {};  // milliseconds, typed as seconds
    std::optional<std::int32_t> v_quality = {};  // 0..100
    std::optional<double> v_peakbitrate = {};    // bits per second; its default may be fractional
    std::optional<std::int32_t> v_peakbuffer = {};   // milliseconds
    std::optional<std::int32_t> v_performance = {};  // 0 fastest, 20, 40, 60, 80, 100 best
    std::optional<std::int32_t> v_preproc = {};      // filter number 0..18
    std::string pixelformat = {};                    // its case as typed
    PixelRatioSettings pixelratio = {};
    ClipSettings v_clip = {};
    std::string v_profile = {};  // device conformance, upper case

    // No option's value: what the parser leaves for the session beside the values.
    bool device_input = false;    // "-adevice" or "-vdevice" was ever given; never set back
    bool duration_typed = false;  // "-duration" stood in the command that is being run

    bool operator==(const EncodeSettings&) const = default;
};

inline const EncodeSettings kNothingGiven;

}  // namespace cli
