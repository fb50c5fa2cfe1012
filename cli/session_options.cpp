// What holds for the session as a whole: its length, its pixels and packets, and what it says of
// itself.
#include "cli/option_row.h"

namespace cli {
namespace {

constexpr Option kOptions[] = {
    {.name = "-duration",
     .flag = &Set::duration_typed,
     .values = {Integer<&Set::duration>()},
     .help = "[-duration] <seconds>\n"
             "    Specifies how long to capture devices or the screen, or to show a picture.\n"
             "    Devices require it. Default: a picture 10 seconds, the screen until Stop.\n",
     .note = {.accepts = "seconds",
              .fallback = "none",
              .effect = "How long devices or the screen are captured, or a still picture is shown. "
                        "Seconds of a pause do not count. For a media file the program writes the "
                        "file's own length here.",
              .example = "-input card.png -output card.wmv -duration 2",
              .errors = kNoRate}},
    {.name = "-saveprofile",
     .values = {Text<&Set::saveprofile>()},
     .help = "[-saveprofile] <file name>\n"
             "    Specifies a file to which the profile of this session is saved.\n"
             "    The extension is .prx.\n",
     .note = {.accepts = "a file name",
              .fallback = "none",
              .effect = "Saves the command's profile to a file before it is encoded, with what was "
                        "unknown in the one that `-loadprofile` named. A file of that name is "
                        "replaced. Passes, preprocessing and marks are the command's, not the "
                        "profile's.",
              .example = "-input film.avi -output film.wmv -saveprofile mine.prx",
              .errors = "`Invalid profile: 0x…` where the file cannot be written or is the input"}},
    {.name = "-devices",
     .show = &CommandActions::ListDevices,
     .help = "[-devices]\n"
             "    Lists the audio and video capture devices with their numbers.\n"
             "    It must be the only word of a command.\n",
     .note = {.accepts = "alone",
              .effect = "Lists the sound and picture devices with their numbers.",
              .example = "-devices",
              .errors = "beside other words: `Invalid parameter: -devices`"}},
    {.name = "-v_codecs",
     .show = &CommandActions::ListVideoCodecs,
     .help = "[-v_codecs]\n"
             "    Lists the video codecs. It must be the only word of a command.\n",
     .note = {.accepts = "alone",
              .effect = "Lists the video codecs of each mode.",
              .example = "-v_codecs",
              .errors = "as `-devices`"}},
    {.name = "-videoonly",
     .flag = &Set::videoonly,
     .help = "[-videoonly]\n"
             "    Encodes only the video of the input file.\n",
     .note = {.accepts = "no value",
              .fallback = "off",
              .effect = "Encodes the picture alone. Stays on for later commands.",
              .example = "-input film.avi -output film.wmv -videoonly",
              .errors = "the file has no picture"}},
    {.name = "-pixelratio",
     .values = {Integer<&Set::pixelratio, &PixelRatioSettings::x>(),
                Integer<&Set::pixelratio, &PixelRatioSettings::y>()},
     .help = "[-pixelratio] <x y>\n"
             "    Specifies the shape of the pixels of the input, width to height.\n",
     .note = {.accepts = "two numbers, 1 to 65535",
              .fallback = "the source's",
              .effect =
                  "The shape of the source's pixels, width to height; the file tells players.",
              .example = "-input film.avi -output film.wmv -pixelratio 16 15",
              .errors = "`Error: 0x80070057 - …` outside the range"}},
    {.name = "-pixelformat",
     .values = {Text<&Set::pixelformat>()},
     .help = "[-pixelformat] <format>\n"
             "    Specifies the pixel format in which the input is taken:\n"
             "    I420\n"
             "    IYUV\n"
             "    RGB24\n"
             "    RGB32\n"
             "    RGB555\n"
             "    RGB565\n"
             "    RGB8\n"
             "    UYVY\n"
             "    YUY2\n"
             "    YV12\n"
             "    YVU9\n"
             "    YVYU\n",
     .note = {.accepts = "a name of Pixel formats, in any case; others are passed over",
              .fallback = "the source's",
              .effect =
                  "The pixels of a picture that is written uncompressed. For other codecs, the "
                  "pixels that the picture is turned into before it is scaled and encoded; "
                  "RGB555 makes WMS9 code 15 bits a pixel, every one exact.",
              .example = "-input film.avi -output film.wmv -pixelformat YUY2",
              .errors = "RGB8, whose palette nobody could choose; RGB565 with UNCOMP, which "
                        "readers take for RGB555; with UNCOMP a size that is no multiple of what "
                        "shares a colour (2, of YVU9 4)"}},
    {.name = "-maxpacket",
     .values = {Integer<&Set::maxpacket>()},
     .help = "[-maxpacket] <packet size>\n"
             "    Specifies the largest size of a packet in bytes.\n",
     .note = {.accepts = "bytes, 100 to 65536; 0 is none",
              .fallback = "chosen by rate",
              .effect = "The largest packet of the file.",
              .example = "-input film.avi -output film.wmv -maxpacket 3000",
              .errors = "`Invalid profile: 0x80070057 …` above 65536; below 100, or below "
                        "`-minpacket`, the run does not start"}},
    {.name = "-minpacket",
     .values = {Integer<&Set::minpacket>()},
     .help = "[-minpacket] <packet size>\n"
             "    Specifies the smallest size of a packet in bytes.\n",
     .note = {.accepts = "bytes, 0 to 65536",
              .fallback = "none",
              .effect = "The smallest packet of the file.",
              .example = "-input film.avi -output film.wmv -minpacket 1000",
              .errors = "a least size above `-maxpacket`"}},
    {.name = "-title",
     .values = {Text<&Set::title>()},
     .help = "\n"
             "[-title] <string>\n"
             "    Specifies the title of the content.\n",
     .note = {.accepts = "a text",
              .fallback = "none",
              .effect = "The title that players show.",
              .example = "-input talk.wav -output talk.wma -profile a64 -title \"A talk\"",
              .errors = kText}},
    {.name = "-author",
     .values = {Text<&Set::author>()},
     .help = "[-author] <string>\n"
             "    Specifies the author of the content.\n",
     .note = {.accepts = "a text",
              .fallback = "none",
              .effect = "The author that players show.",
              .example = "-input talk.wav -output talk.wma -profile a64 -author \"A. Person\"",
              .errors = kText}},
    {.name = "-copyright",
     .values = {Text<&Set::copyright>()},
     .help = "[-copyright] <string>\n"
             "    Specifies the copyright notice of the content.\n",
     .note = {.accepts = "a text",
              .fallback = "none",
              .effect = "The copyright notice that players show.",
              .example = "-input talk.wav -output talk.wma -profile a64 -copyright 2026",
              .errors = kText}},
    {.name = "-description",
     .values = {Text<&Set::description>()},
     .help = "[-description] <string>    \n"
             "    Specifies a description of the content.\n",
     .note = {.accepts = "a text",
              .fallback = "none",
              .effect = "The description that players show.",
              .example =
                  "-input talk.wav -output talk.wma -profile a64 -description \"The first hour\"",
              .errors = kText}},
    {.name = "-rating",
     .values = {Text<&Set::rating>()},
     .help = "[-rating] <string>\n"
             "    Specifies the rating of the content.\n"
             "NOTE: The maximum string length for each one is 255.    \n",
     .note = {.accepts = "a text",
              .fallback = "none",
              .effect = "The rating that players show.",
              .example = "-input talk.wav -output talk.wma -profile a64 -rating G",
              .errors = kText}},
};

}  // namespace

OptionBlock SessionOptions() { return {{}, kOptions}; }

}  // namespace cli
