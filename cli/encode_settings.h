// The one record of everything that commands have said so far: a field an option, named after it.
#pragma once

#include <cstdint>
#include <string>

namespace cli {

struct PushSettings {
    std::string server_name;
    std::string publishing_point;
    std::string template_name;  // optional
};

/// Milliseconds from the start of the file.
struct TimeSettings {
    std::int32_t start = -1;
    std::int32_t end = -1;  // 0 = to the end of the file
};

/// Coefficients as typed; the encoder gets them negated.
struct FoldDownSettings {
    std::int32_t surround = -1;
    std::int32_t center = -1;
    std::int32_t lfe = -1;
};

struct PixelRatioSettings {
    std::int32_t x = -1;
    std::int32_t y = -1;
};

/// Pixels cut off each side of the source's picture.
struct ClipSettings {
    std::int32_t left = -1;
    std::int32_t top = -1;
    std::int32_t right = -1;
    std::int32_t bottom = -1;
};

/// -1 (numbers), "" (texts) and false (flags) mean not given. Nothing resets the record between two
/// commands: a value stays in force until an option overwrites it.
struct EncodeSettings {
    // Input and output
    std::string input;         // file or folder
    std::string output;        // file or folder
    std::string outputstring;  // appended to every output name of a folder
    std::string wme;           // session file
    std::int32_t adevice = -1;
    std::int32_t vdevice = -1;
    bool audioonly = false;
    bool videoonly = false;
    std::int32_t broadcast = -1;  // port
    PushSettings push;
    TimeSettings time;
    double duration = -1;  // seconds; typed as a whole number, a run on a file leaves fractions
    bool silent = false;
    std::int32_t verbose = 2;  // stored only
    std::string title;
    std::string author;
    std::string copyright;
    std::string description;
    std::string rating;

    // Profiles
    std::string profile;  // code of a predefined profile, its case as typed
    std::string loadprofile;
    std::string saveprofile;
    std::int32_t maxpacket = -1;  // bytes
    std::int32_t minpacket = -1;  // bytes

    // Audio
    std::string a_codec;              // upper case
    std::int32_t a_mode = -1;         // 0..4
    std::string a_setting;            // "48_44_2", "Q90_44_2"
    std::int32_t a_peakbitrate = -1;  // bits per second
    std::int32_t a_peakbuffer = -1;   // milliseconds
    std::int32_t a_content = -1;      // 0..2
    std::string a_contentedl;
    FoldDownSettings a_folddown6to2;

    // Video
    std::string v_codec;              // upper case
    std::int32_t v_mode = -1;         // 0..4
    std::int32_t v_bitrate = -1;      // bits per second
    std::int32_t v_buffer = -1;       // milliseconds
    std::int32_t v_width = -1;        // pixels
    std::int32_t v_height = -1;       // pixels
    float v_framerate = -1;           // thousandths of a frame per second
    std::int32_t v_keydist = -1;      // milliseconds, typed as seconds
    std::int32_t v_quality = -1;      // 0..100
    double v_peakbitrate = -1;        // bits per second; its default may be fractional
    std::int32_t v_peakbuffer = -1;   // milliseconds
    std::int32_t v_performance = -1;  // 0 fastest, 20, 40, 60, 80, 100 best
    std::int32_t v_preproc = -1;      // filter number 0..18
    std::string pixelformat;          // its case as typed
    PixelRatioSettings pixelratio;
    ClipSettings v_clip;
    std::string v_profile;  // device conformance, upper case

    // No option's value: what the parser leaves for the session beside the values.
    bool device_input = false;    // "-adevice" or "-vdevice" was ever given; never set back
    bool duration_typed = false;  // "-duration" stood in the command that is being run
};

}  // namespace cli
