#include "docs/reference/option_notes.h"

namespace reference {
namespace {

constexpr std::string_view kText =
    "no text: `Error: 0x8002000B - …` at the end of the command, else `Invalid format for "
    "parameter …`";
constexpr std::string_view kNoSize =
    "no whole number: `Expect integer value for parameter …`; `Invalid profile: 0x80070057 …` "
    "above 16384";
constexpr std::string_view kNoRate = "no whole number: `Expect integer value for parameter …`";
constexpr std::string_view kNotYet =
    "not possible yet: refused in one line before anything is written";

// clang-format off
constexpr OptionNote kNotes[] = {
    // name, values, accepts, fallback, effect, example, today, errors
    {"-wme", "", "a file name", "none",
     "Takes sources, profile and output from a session file.",
     "-wme job.wme -output film.wmv", Today::Refused,
     "`Loading the session (.wme) file failed: …`, since session files cannot be read yet"},
    {"-input", "", "a media file or a folder", "none",
     "What is encoded: every media file that the FFmpeg libraries open, still pictures too (10 "
     "seconds, or the `-duration` of the command). Of a folder, the files ending in .avi, .wav, "
     ".mpg, .mpeg, .vob, .wmv, .wma, .mp3 and .asf are encoded one after another, and those of its "
     "sub-folders into sub-folders of the output. As the whole command, `-input FILE` shows what "
     "the file holds instead.",
     "-input film.avi -output film.wmv", Today::Works,
     "`Error: 0x80070002 - …` when there is no such file, `Error: 0x8007000D - …` when it is no "
     "media file"},
    {"-audioonly", "", "no value", "off",
     "Encodes the sound alone; names get .wma. Stays on for later commands.",
     "-input film.avi -output film -audioonly", Today::Works, "the file has no sound"},
    {"-videoonly", "", "no value", "off",
     "Encodes the picture alone. Stays on for later commands.",
     "-input film.avi -output film.wmv -videoonly", Today::Works, "the file has no picture"},
    {"-adevice", "", "a number that `-devices` lists; may be left out", "0 when left out",
     "Captures sound from a device. Needs `-duration`, and no `-input`.",
     "-adevice 0 -duration 30 -output talk.wma", Today::Hardware,
     "`Error: Invalid audio device number specified`; `Duration must be specified when capturing "
     "from devices.`; the device is not there or cannot be opened"},
    {"-vdevice", "", "a number that `-devices` lists; may be left out", "0 when left out",
     "Captures picture from a device. Needs `-duration`, and no `-input`.",
     "-vdevice 0 -duration 30 -output room.wmv", Today::Hardware,
     "`Error: Invalid video device number specified`; otherwise as `-adevice`"},
    {"-profile", "", "a code of the table below, in any case", "a custom profile, see Defaults",
     "Sets codecs, rates, size and buffers at once; audio and video options beside it override "
     "single values. A code that begins with a (but not av) sets `-audioonly`, one with v "
     "`-videoonly`. Codes that begin with scrn capture the screen, or the part of it that "
     "TESSIVO_SCREEN names, until Stop or for `-duration` seconds.",
     "-input film.avi -output film.wmv -profile av350", Today::Works,
     "`No predefined profile found.`"},
    {"-a_mode", "", "0 to 4, see Modes", "0",
     "How the sound's rate is held.",
     "-input talk.wav -output talk.wma -a_mode 1", Today::Works,
     "`Invalid -a_mode <mode_number>`; the codec has no such mode"},
    {"-a_codec", "", "WMA9STD, WMA9PRO, WMA9LSL, WMSP9, PCM, in any case", "WMA9STD",
     "The sound's codec. WMA9LSL needs `-a_mode 2`; PCM needs `-v_codec UNCOMP` or `-audioonly`.",
     "-input talk.wav -output talk.wma -a_codec WMSP9", Today::Works,
     "`Please enter correct audio codec index only`; `Video codec must be uncompressed when using "
     "uncompressed audio codec`"},
    {"-a_setting", "", "RATE_KHZ_CHANNELS, QQUALITY_KHZ_CHANNELS, either with _BITS; see Audio "
     "formats", "see Defaults",
     "The sound's format. A setting that begins with Q sets `-a_mode 2`; four fields without "
     "Q100 select WMA9PRO in a custom profile.",
     "-input talk.wav -output talk.wma -a_setting 128_44_2", Today::Works,
     "`Invalid audio bit rate …`, `Invalid audio sample rate …`, `Invalid audio channels …`, "
     "`Invalid bits per sample …`, `Invalid format … expecting integer value`; a format that the "
     "codec has not is refused with the near ones that it has"},
    {"-a_peakbitrate", "", "bits per second", "1.5 times the rate",
     "The highest rate of `-a_mode 4`.",
     "-input talk.wav -output talk.wma -a_mode 4 -a_peakbitrate 128000", Today::Works,
     "a peak below the average"},
    {"-a_peakbuffer", "", "milliseconds", "3000",
     "The buffer over which `-a_mode 4` holds its peak.",
     "-input talk.wav -output talk.wma -a_mode 4 -a_peakbuffer 5000", Today::Works, kNoRate},
    {"-a_content", "", "0, 1 or 2", "none",
     "The voice codec's kind of content. Kept; the codec that stands in for it has no use for it.",
     "-input talk.wav -output talk.wma -a_codec WMSP9 -a_content 1", Today::Works,
     "`Invalid range for parameter -a_content`"},
    {"-a_contentedl", "", "a file name", "none",
     "The voice codec's optimization definition file.",
     "-input talk.wav -output talk.wma -a_codec WMSP9 -a_contentedl parts.edl", Today::Refused,
     kNotYet},
    {"-a_folddown6to2", "", "three numbers from 0 to 144", "3 3 144, the levels of ITU-R BS.775",
     "How two channels are made of six: decibels by which surround, center and low-frequency "
     "channel are lowered (a gain of 10^(-decibels / 20); 144, the range of 24-bit sound, leaves a "
     "channel out), stored negated as SurroundMix, CenterMix and LFEMix for players. A source with "
     "more than two channels is mixed by them when its format has two; all gains are then lowered "
     "together so that nothing can overload.",
     "-input film.avi -output film.wmv -a_folddown6to2 10 3 3", Today::Works,
     "a number above 144, where the sound is mixed"},
    {"-v_mode", "", "0 to 4, see Modes", "0",
     "How the picture's rate is held.",
     "-input film.avi -output film.wmv -v_mode 3 -v_bitrate 800000", Today::Works,
     "`Invalid -v_mode <mode_number>`"},
    {"-v_codec", "", "WMV7, WMV8, WMV9, WMS9, MP41, UNCOMP, in any case", "WMV9",
     "The picture's codec. UNCOMP needs `-a_codec PCM` or `-videoonly`.",
     "-input film.avi -output film.wmv -v_codec WMV8", Today::Works,
     "`Please enter correct video codec index only`; `Audio codec must be uncompressed when using "
     "uncompressed video codec`"},
    {"-v_bitrate", "", "bits per second, at least 1", "250000",
     "The picture's average rate.",
     "-input film.avi -output film.wmv -v_bitrate 500000", Today::Works, kNoRate},
    {"-v_buffer", "", "milliseconds, 1 to 600000", "5000",
     "How much picture a player buffers, and so over which time the rate is held.",
     "-input film.avi -output film.wmv -v_buffer 3000", Today::Works,
     "`Invalid profile: 0x80070057 …` outside the range"},
    {"-v_width", "", "pixels; 0 is the source's, or follows from the height", "0",
     "The picture's width. An odd one is made even where the codec wants that.",
     "-input film.avi -output film.wmv -v_width 320 -v_height 240", Today::Works, kNoSize},
    {"-v_height", "", "pixels; 0 is the source's, or follows from the width", "0",
     "The picture's height. An odd one is made even where the codec wants that.",
     "-input film.avi -output film.wmv -v_height 240", Today::Works, kNoSize},
    {"-v_framerate", "", "frames per second, fractions too", "30",
     "The highest frame rate. One below the input's is raised to it; no frame is ever repeated.",
     "-input film.avi -output film.wmv -v_framerate 29.97", Today::Works,
     "`Expect float value for parameter -v_framerate`"},
    {"-v_keydist", "", "seconds", "10",
     "The longest time between key frames, which are the places that a player can seek to.",
     "-input film.avi -output film.wmv -v_keydist 2", Today::Works, kNoRate},
    {"-v_quality", "", "0 to 100", "75; in `-v_mode 2` 95",
     "In `-v_mode 2` the quality of the pictures. Otherwise smooth motion (0) against sharp "
     "pictures (100).",
     "-input film.avi -output film.wmv -v_mode 2 -v_quality 85", Today::Works,
     "`Invalid profile: 0x80070057 …` above 100"},
    {"-v_peakbitrate", "", "bits per second", "1.5 times the rate",
     "The highest rate of `-v_mode 4`, in other modes without effect. A picture's rate below it is "
     "raised to it, so a custom profile has one rate for both; av600vbr keeps a peak above its rate.",
     "-input film.avi -output film.wmv -v_mode 4 -v_bitrate 400000 -v_peakbitrate 900000",
     Today::Works,
     "a peak below the rate"},
    {"-v_peakbuffer", "", "milliseconds", "5000",
     "The buffer over which `-v_mode 4` holds its peak.",
     "-input film.avi -output film.wmv -v_mode 4 -v_peakbuffer 8000", Today::Works, kNoRate},
    {"-v_performance", "", "0, 20, 40, 60, 80 or 100", "the encoder's own balance",
     "Speed (0) against quality (100) of the encoder's search and decisions. With WMV9 a file has "
     "pictures that are predicted from both sides from 40 on, one at most between two others.",
     "-input film.avi -output film.wmv -v_performance 100", Today::Works,
     "any other number ends the command without a line"},
    {"-v_preproc", "", "0 to 18, see Filters", "0",
     "What is done to the pictures before they are encoded. Deinterlacing follows the motion, "
     "makes one picture of every frame and takes the order of the fields from the source (top "
     "first where it tells none). A telecine pattern is counted from the first frame that is "
     "encoded and trusted, filter 5 looks for one. Filters 2 to 4 do what 1 does, and a line says so.",
     "-input film.avi -output film.wmv -v_preproc 5", Today::Works,
     "`Invalid preproc value: …`; a codec that cannot code fields, with 16 to 18"},
    {"-pixelformat", "", "a name of Pixel formats, in any case; others are passed over",
     "the source's",
     "The pixels of a picture that is written uncompressed. For other codecs, the pixels that the "
     "picture is turned into before it is scaled and encoded.",
     "-input film.avi -output film.wmv -pixelformat YUY2", Today::Works,
     "RGB8, whose palette nobody could choose; RGB565 with UNCOMP, which readers take for RGB555; "
     "with UNCOMP a size that is no multiple of what shares a colour (2, of YVU9 4)"},
    {"-pixelratio", "", "two numbers, 1 to 65535", "the source's",
     "The shape of the source's pixels, width to height; the file tells players.",
     "-input film.avi -output film.wmv -pixelratio 16 15", Today::Works,
     "`Error: 0x80070057 - …` outside the range"},
    {"-v_clip", "", "four numbers of pixels", "0 0 0 0",
     "What is cut off the source's picture, set upright, at its left, top, right and bottom before "
     "it is scaled. Without a size asked for, what is left is encoded as it is.",
     "-input film.avi -output film.wmv -v_clip 0 6 0 6", Today::Works,
     "margins that leave nothing"},
    {"-v_profile", "", "SP, MP or CP, or with a level SP@LL, SP@ML, MP@LL, MP@ML or MP@HL", "none",
     "What a device must be able to decode: the simple or the main profile of Windows Media Video 9. "
     "Without a level, the smallest that holds the picture's size and rates. The file says which it "
     "is, and the stream keeps to the buffer that the level has, in every mode. CP, with fields, is "
     "not there.",
     "-input film.avi -output film.wmv -v_profile MP", Today::Works,
     "a size, frame rate or bit rate beyond the level; another text; another codec than WMV9"},
    {"-output", "", "a file or a folder", "none; a run needs one",
     "What is written. Folders on the way are made. In a folder that exists, the file takes the "
     "input's name. A name without an extension gets .wmv, or .wma without a picture. A file that "
     "is there already is replaced.",
     "-input film.avi -output converted/film", Today::Works,
     "the output is the input; there is no output; `Error: No output directory specified` for a "
     "folder as input"},
    {"-outputstring", "", "a text", "none",
     "Is appended to each name of a folder's outputs, before the extension.",
     "-input holiday -output converted -outputstring _low -profile av100", Today::Works, kText},
    {"-broadcast", "", "a port; may be left out", "8080 when left out",
     "Serves the stream to players over HTTP.",
     "-input film.avi -broadcast 8080", Today::Refused, kNotYet},
    {"-push", "<server> <publishing point> <template>", "two texts, and a third that may be left "
     "out", "none",
     "Sends the stream to a server.",
     "-input film.avi -output film.wmv -push media.example live", Today::Refused, kNotYet},
    {"-time", "", "milliseconds, and milliseconds or the word end (lower case)",
     "the whole file",
     "The part of the input that is encoded. An end of 0 is the end of the file; an end past it "
     "is the end of the file too.",
     "-input film.avi -output film.wmv -time 500 1500", Today::Works,
     "`Invalid format … expecting integer value`; a start past the end of the file"},
    {"-duration", "", "seconds", "none",
     "How long devices or the screen are captured, or a still picture is shown. For a media file "
     "the program writes the file's own length here.",
     "-input card.png -output card.wmv -duration 2", Today::Works, kNoRate},
    {"-silent", "", "no value", "off",
     "Prints no report after the files of a folder.",
     "-input holiday -output converted -profile av100 -silent", Today::Works, "none"},
    {"-title", "", "a text", "none", "The title that players show.",
     "-input talk.wav -output talk.wma -profile a64 -title \"A talk\"", Today::Works, kText},
    {"-author", "", "a text", "none", "The author that players show.",
     "-input talk.wav -output talk.wma -profile a64 -author \"A. Person\"", Today::Works, kText},
    {"-copyright", "", "a text", "none", "The copyright notice that players show.",
     "-input talk.wav -output talk.wma -profile a64 -copyright 2026", Today::Works, kText},
    {"-description", "", "a text", "none", "The description that players show.",
     "-input talk.wav -output talk.wma -profile a64 -description \"The first hour\"",
     Today::Works, kText},
    {"-rating", "", "a text", "none", "The rating that players show.",
     "-input talk.wav -output talk.wma -profile a64 -rating G", Today::Works, kText},
    {"-saveprofile", "", "a file name", "none", "Saves the command's profile to a file.",
     "-input film.avi -output film.wmv -saveprofile mine.prx", Today::Refused,
     "`Invalid profile: 0x80004001 …`, since profile files cannot be written yet"},
    {"-loadprofile", "", "a file name", "none", "Takes the profile from a file.",
     "-input film.avi -output film.wmv -loadprofile mine.prx", Today::Refused,
     "`Invalid profile: 0x80004001 …`, since profile files cannot be read yet"},
    {"-verbose", "<level>", "a whole number", "2", "Is kept; nothing depends on it.",
     "-input film.avi -output film.wmv -verbose 1", Today::Works, kNoRate},
    {"-s_config", "", "a file name; .weu is added when it is missing", "none",
     "Saves the words of this command, but for itself and a file name behind `-config`, and then "
     "runs it.",
     "-input film.avi -output film.wmv -profile av100 -s_config saved", Today::Works, kText},
    {"-config", "", "a file name with its extension", "none",
     "Reads options from a file's first line, separated by single blanks. Those of the command "
     "itself count for more, wherever they stand.",
     "-config job.weu -input film.avi -output film.wmv", Today::Works,
     "`Configuration file … is empty`; files that name each other more than 16 deep"},
    {"-maxpacket", "", "bytes, 100 to 65536; 0 is none", "chosen by rate",
     "The largest packet of the file.",
     "-input film.avi -output film.wmv -maxpacket 3000", Today::Works,
     "`Invalid profile: 0x80070057 …` above 65536; below 100, or below `-minpacket`, the run "
     "does not start"},
    {"-minpacket", "", "bytes, 0 to 65536", "none",
     "The smallest packet of the file.",
     "-input film.avi -output film.wmv -minpacket 1000", Today::Works,
     "a least size above `-maxpacket`"},

    {"-devices", "", "alone", "", "Lists the sound and picture devices with their numbers.",
     "-devices", Today::Works, "beside other words: `Invalid parameter: -devices`"},
    {"-a_codecs", "", "alone", "", "Lists the audio codecs of each mode.",
     "-a_codecs", Today::Works, "as `-devices`"},
    {"-a_formats", "", "alone", "", "Lists the audio formats of each codec and mode.",
     "-a_formats", Today::Works, "as `-devices`"},
    {"-v_codecs", "", "alone", "", "Lists the video codecs of each mode.",
     "-v_codecs", Today::Works, "as `-devices`"},
    {"-help", "", "alone; also -?, -all? and /?", "", "Prints the help.",
     "-help", Today::Works, "as `-devices`"},
    {"-help?", "", "alone", "",
     "Starts the help viewer of a system that has one for the encoder's help file.",
     "-help?", Today::Hardware, "`Error: 0x80070002 - …` where there is none"},
};
// clang-format on

constexpr int kFirstUnsupportedFilter = 2;
constexpr int kLastUnsupportedFilter = 4;
constexpr int kLastFilterOfEveryCodec = 15;

}  // namespace

std::span<const OptionNote> OptionNotes() { return kNotes; }

bool FilterWorksToday(int number) { return number <= kLastFilterOfEveryCodec; }

std::string_view FilterNote(int number) {
    if (!FilterWorksToday(number)) return "with -v_codec MP41 alone";
    const bool unsupported = number >= kFirstUnsupportedFilter && number <= kLastUnsupportedFilter;
    return unsupported ? "does what 1 does" : "works";
}

}  // namespace reference
