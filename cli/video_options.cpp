// Codec, mode, size and rates of the video stream.
#include "cli/option_row.h"
#include "platform/codec_table.h"

namespace cli {
namespace {

constexpr std::string_view kHeading =
    "\n"
    "\n"
    "\n"
    "\n"
    "Usage for video settings.\n"
    "\n";

constexpr TextRule kCodec{platform::kVideoCodecNames,
                          "Please enter correct video codec index only"};
constexpr NumberRule kPreproc{.lowest = 0,
                              .highest = 18,
                              .line = "Invalid preproc value: ",
                              .names = NumberRule::Names::Value};
constexpr NumberRule kPerformance{
    .lowest = 0, .highest = 100, .step = 20, .names = NumberRule::Names::Nothing};

constexpr Option kOptions[] = {
    {.name = "-v_codec",
     .values = {OneOf<&Set::v_codec>(kCodec)},
     .help = "[-v_codec] <codec index>\n"
             "    Specify codec index:\n"
             "       WMV7: Windows Media Video 7.\n"
             "       WMV8: Windows Media Video 8.1.\n"
             "       WMV9: Windows Media Video 9 (default).\n"
             "       WMS9: Windows Media Video Screen 9.\n"
             "       MP41: ISO MPEG-4 Video v1\n"
             "       UNCOMP: Full frames (uncompressed)\n",
     .note = {.fallback = "WMV9",
              .effect = "The picture's codec. UNCOMP needs `-a_codec PCM` or `-videoonly`.",
              .example = "-input film.avi -output film.wmv -v_codec WMV8",
              .errors = "`Please enter correct video codec index only`; `Audio codec must be "
                        "uncompressed when using uncompressed video codec`"}},
    {.name = "-v_width",
     .values = {Integer<&Set::v_width>()},
     .help = "[-v_width] <width>\n"
             "    Specifies the width of the output in pixels.\n"
             "    Default: the width of the input.\n",
     .note = {.accepts = "pixels; 0 is the source's, or follows from the height",
              .fallback = "0",
              .effect = "The picture's width. An odd one is made even where the codec wants that.",
              .example = "-input film.avi -output film.wmv -v_width 320 -v_height 240",
              .errors = kNoSize}},
    {.name = "-v_height",
     .values = {Integer<&Set::v_height>()},
     .help = "[-v_height] <height>\n"
             "    Specifies the height of the output in pixels.\n"
             "    Default: the height of the input.\n",
     .note = {.accepts = "pixels; 0 is the source's, or follows from the width",
              .fallback = "0",
              .effect = "The picture's height. An odd one is made even where the codec wants that.",
              .example = "-input film.avi -output film.wmv -v_height 240",
              .errors = kNoSize}},
    {.name = "-v_framerate",
     .values = {FloatTimes<&Set::v_framerate>(1000)},
     .help = "[-v_framerate] <rate>\n"
             "    Specifies the highest number of frames per second, for example 29.97.\n"
             "    A rate below that of the input file or of the profile is raised to it.\n"
             "    Default: 30 fps.\n",
     .note = {.accepts = "frames per second, fractions too",
              .fallback = "30",
              .effect = "The highest frame rate. One below the input's or the profile's is raised "
                        "to the higher of the two; no frame is ever repeated.",
              .example = "-input film.avi -output film.wmv -v_framerate 29.97",
              .errors = "`Expect float value for parameter -v_framerate`"}},
    {.name = "-v_keydist",
     .values = {IntegerTimes<&Set::v_keydist>(1000)},
     .help = "[-v_keydist] <time>\n"
             "    Specifies the longest time between two key frames in seconds.\n"
             "    Default: 10 seconds.\n",
     .note = {.accepts = "seconds",
              .fallback = "10",
              .effect = "The longest time between key frames, which are the places that a player "
                        "can seek to.",
              .example = "-input film.avi -output film.wmv -v_keydist 2",
              .errors = kNoRate}},
    {.name = "-v_preproc",
     .values = {IntegerIn<&Set::v_preproc>(kPreproc)},
     .help = "[-v_preproc] <filter number>\n"
             "    Specifies a filter that the input passes before it is encoded.\n"
             "    Filters 2 to 4 only deinterlace; set the size with -v_width and -v_height.\n"
             "    0: None (for progressive video input).\n"
             "    1: Deinterlace but preserve the size.\n"
             "       Example: 720x480 at 30 fps remains 720x480 at 30 fps.\n"
             "    2: Deinterlace but halve the size.\n"
             "       Example: 720x480 becomes 360x240 with -v_width 360 -v_height 240.\n"
             "    3: Deinterlace, halve the size, and double the frame rate.\n"
             "       Example: the same as for 2; the frame rate of the input is kept.\n"
             "    4: Deinterlace, halve vertical size, and double frame rate.\n"
             "       Example: 720x480 becomes 720x240 with -v_height 240.\n"
             "    5: Inverse telecine from 30fps to 24fps.\n"
             "    6: Inverse telecine - First field is top field, AA telecine pattern.\n"
             "    7: Inverse telecine - First field is top field, BB telecine pattern.\n"
             "    8: Inverse telecine - First field is top field, BC telecine pattern.\n"
             "    9: Inverse telecine - First field is top field, CD telecine pattern.\n"
             "    10: Inverse telecine - First field is top field, DD telecine pattern.\n"
             "    11: Inverse telecine - First field is bottom field, AA telecine\n"
             "       pattern.\n"
             "    12: Inverse telecine - First field is bottom field, BB telecine\n"
             "       pattern.\n"
             "    13: Inverse telecine - First field is bottom field, BC telecine\n"
             "       pattern.\n"
             "    14: Inverse telecine - First field is bottom field, CD telecine\n"
             "      pattern.\n"
             "    15: Inverse telecine - First field is bottom field, DD telecine pattern.\n"
             "    16: Interlaced encoding.\n"
             "    17: Interlaced encoding - First field is top field.\n"
             "    18: Interlaced encoding - First field is bottom field.\n"
             "    Default: 0: None.\n",
     .note = {.accepts = "0 to 18, see Filters",
              .fallback = "0",
              .effect =
                  "What is done to the pictures before they are encoded. Deinterlacing follows the "
                  "motion, makes one picture of every frame and takes the order of the fields from "
                  "the source (top first where it tells none). A telecine pattern is counted from "
                  "the first frame that is encoded and trusted, filter 5 looks for one. Filters 2 "
                  "to 4 do what 1 does, and a line says so.",
              .example = "-input film.avi -output film.wmv -v_preproc 5",
              .errors =
                  "`Invalid preproc value: …`; a codec that cannot code fields, with 16 to 18"}},
    {.name = "-v_clip",
     .values = {Integer<&Set::v_clip, &ClipSettings::left>(),
                Integer<&Set::v_clip, &ClipSettings::top>(),
                Integer<&Set::v_clip, &ClipSettings::right>(),
                Integer<&Set::v_clip, &ClipSettings::bottom>()},
     .help = "[-v_clip] <left> <top> <right> <bottom>\n"
             "    Specifies how many pixels are cut off each side of the input.\n"
             "    Example: -v_clip 0 60 0 60 cuts the black bars off a letterboxed film.\n",
     .note = {.accepts = "four numbers of pixels",
              .fallback = "0 0 0 0",
              .effect = "What is cut off the source's picture, set upright, at its left, top, "
                        "right and bottom before it is scaled. Without a size asked for, what is "
                        "left is encoded as it is.",
              .example = "-input film.avi -output film.wmv -v_clip 0 6 0 6",
              .errors = "margins that leave nothing"}},
    {.name = "-v_mode",
     .values = {Integer<&Set::v_mode>()},
     .help = "[-v_mode] <mode number>\n"
             "    Specifies the video encoding mode:\n"
             "    0: 1-pass CBR (default).\n"
             "    1: 2-pass CBR.\n"
             "    2: Quality-based VBR.\n"
             "    3: Bit rate-based VBR (two-pass).\n"
             "    4: Peak bit rate-based VBR (two-pass).\n",
     .note = {.accepts = "0 to 4, see Modes",
              .fallback = "0",
              .effect = "How the picture's rate is held.",
              .example = "-input film.avi -output film.wmv -v_mode 3 -v_bitrate 800000",
              .errors = "`Invalid -v_mode <mode_number>`"}},
    {.name = "-v_bitrate",
     .values = {Integer<&Set::v_bitrate>()},
     .help = "[-v_bitrate] <bit rate>\n"
             "    Specifies the video bit rate in bits per second.\n"
             "    Default: 250000 bps.\n",
     .note = {.accepts = "bits per second, at least 1",
              .fallback = "250000",
              .effect = "The picture's average rate.",
              .example = "-input film.avi -output film.wmv -v_bitrate 500000",
              .errors = kNoRate}},
    {.name = "-v_buffer",
     .values = {Integer<&Set::v_buffer>()},
     .help = "[-v_buffer] <buffer>\n"
             "    Specifies how much of the video a player buffers, in milliseconds.\n"
             "    Default: 5000 msec.\n",
     .note = {.accepts = "milliseconds, 1 to 600000",
              .fallback = "5000",
              .effect =
                  "How much picture a player buffers, and so over which time the rate is held.",
              .example = "-input film.avi -output film.wmv -v_buffer 3000",
              .errors = "`Invalid profile: 0x80070057 …` outside the range"}},
    {.name = "-v_quality",
     .values = {Integer<&Set::v_quality>()},
     .help = "[-v_quality] <quality>\n"
             "    Specifies a number from 0 to 100. For CBR, it weighs smooth motion (0)\n"
             "    against sharp pictures (100). Default: 75.\n"
             "    For quality-based VBR, it is the quality of the pictures. Default: 95\n",
     .note = {.accepts = "0 to 100",
              .fallback = "75; in `-v_mode 2` 95",
              .effect = "In `-v_mode 2` the quality of the pictures. Otherwise smooth motion (0) "
                        "against sharp pictures (100).",
              .example = "-input film.avi -output film.wmv -v_mode 2 -v_quality 85",
              .errors = "`Invalid profile: 0x80070057 …` above 100"}},
    {.name = "-v_peakbitrate",
     .values = {Integer<&Set::v_peakbitrate>()},
     .help = "[-v_peakbitrate] <peak bit rate>\n"
             "    Specifies the peak bit rate in bits per second. Used with -v_mode 4,\n"
             "    where a lower -v_bitrate is raised to it.\n"
             "    Default: 1.5 times the video bit rate.\n",
     .note =
         {.accepts = "bits per second",
          .fallback = "1.5 times the rate",
          .effect = "The highest rate of `-v_mode 4`, in other modes without effect. A picture's "
                    "rate below it is raised to it, so a custom profile has one rate for both; "
                    "av600vbr keeps a peak above its rate.",
          .example =
              "-input film.avi -output film.wmv -v_mode 4 -v_bitrate 400000 -v_peakbitrate 900000",
          .errors = "a peak below the rate"}},
    {.name = "-v_peakbuffer",
     .values = {Integer<&Set::v_peakbuffer>()},
     .help = "[-v_peakbuffer] <peak buffer>\n"
             "    Specifies the peak buffer in milliseconds. Used with -v_mode 4.\n"
             "    Default: 5000 msec.\n",
     .note = {.accepts = "milliseconds",
              .fallback = "5000",
              .effect = "The buffer over which `-v_mode 4` holds its peak.",
              .example = "-input film.avi -output film.wmv -v_mode 4 -v_peakbuffer 8000",
              .errors = kNoRate}},
    {.name = "-v_performance",
     .values = {IntegerIn<&Set::v_performance>(kPerformance)},
     .help = "[-v_performance] <performance>\n"
             "    Specifies the balance between speed and quality, from 0 (fastest) to 100\n"
             "    (best quality). Valid numbers are 0, 20, 40, 60, 80 and 100.\n",
     .note = {.accepts = "0, 20, 40, 60, 80 or 100",
              .fallback = "the encoder's own balance",
              .effect = "Speed (0) against quality (100) of the encoder's search and decisions. "
                        "With WMV9 a file has B pictures from 10 on, at most two in a row.",
              .example = "-input film.avi -output film.wmv -v_performance 100",
              .errors = "any other number ends the command without a line"}},
    {.name = "-v_profile",
     .values = {UpperText<&Set::v_profile>()},
     .help = "[-v_profile] <device conformance>\n"
             "    Specifies what a player must be able to decode:\n"
             "    SP: Simple profile\n"
             "    MP: Main profile\n"
             "    CP: Complex profile\n",
     .note = {.accepts = "SP, MP or CP, or with a level SP@LL, SP@ML, MP@LL, MP@ML or MP@HL",
              .fallback = "none",
              .effect =
                  "What a device must be able to decode: the simple or the main profile of Windows "
                  "Media Video 9. Without a level, the smallest that holds the picture's size and "
                  "rates. The file says which it is, and the stream keeps to the buffer that the "
                  "level has, in every mode. CP, with fields, is not there.",
              .example = "-input film.avi -output film.wmv -v_profile MP",
              .errors = "a size, frame rate or bit rate beyond the level; another text; another "
                        "codec than WMV9"}},
};

}  // namespace

OptionBlock VideoOptions() { return {kHeading, kOptions}; }

}  // namespace cli
