// Codec, mode and format of the audio stream.
#include "cli/option_row.h"
#include "platform/codec_table.h"

namespace cli {
namespace {

constexpr std::string_view kHeading =
    "\n"
    "\n"
    "Usage for audio settings.\n"
    "\n";

constexpr TextRule kCodec{platform::kAudioCodecNames,
                          "Please enter correct audio codec index only"};
constexpr NumberRule kContent{.lowest = 0,
                              .highest = 2,
                              .line = "Invalid range for parameter ",
                              .names = NumberRule::Names::Option};

constexpr Option kOptions[] = {
    {.name = "-a_codec",
     .values = {OneOf<&Set::a_codec>(kCodec)},
     .help = "[-a_codec] <codec index>\n"
             "    Specify codec index:\n"
             "    WMA9STD: Windows Media Audio 9 (default).\n"
             "    WMA9PRO: Windows Media Audio 9 Professional\n"
             "    WMSP9:   Windows Media Audio 9 Voice\n"
             "    WMA9LSL:  Windows Media Audio 9 Lossless; -a_mode 2 required\n"
             "    PCM: No compression\n",
     .note = {.fallback = "WMA9STD",
              .effect = "The sound's codec. WMA9LSL needs `-a_mode 2`; PCM needs `-v_codec UNCOMP` "
                        "or `-audioonly`.",
              .example = "-input talk.wav -output talk.wma -a_codec WMSP9",
              .errors = "`Please enter correct audio codec index only`; `Video codec must be "
                        "uncompressed when using uncompressed audio codec`"}},
    {.name = "-a_codecs",
     .show = &CommandActions::ListAudioCodecs,
     .help = "[-a_codecs]\n"
             "    Lists the audio codecs. It must be the only word of a command.\n",
     .note = {.accepts = "alone",
              .effect = "Lists the audio codecs of each mode.",
              .example = "-a_codecs",
              .errors = "as `-devices`"}},
    {.name = "-a_content",
     .values = {IntegerIn<&Set::a_content>(kContent)},
     .help = "[-a_content] <mode>\n"
             "    Specifies the content mode of the voice codec (WMSP9): 0, 1 or 2.\n",
     .note = {.accepts = "0, 1 or 2",
              .fallback = "0",
              .effect =
                  "What the voice codec takes the sound for: 1 speech, 2 speech with music, 0 "
                  "as it sounds from moment to moment. Music that lasts is told of at the "
                  "end: another codec keeps it better.",
              .example = "-input talk.wav -output talk.wma -a_codec WMSP9 -a_content 1",
              .errors = "`Invalid range for parameter -a_content`"}},
    {.name = "-a_contentedl",
     .values = {Text<&Set::a_contentedl>()},
     .help = "[-a_contentedl] <file name>\n"
             "    Specifies an optimization definition file for the voice codec (WMSP9).\n",
     .note = {.accepts = "a file name",
              .fallback = "none",
              .effect =
                  "The content mode of parts of the sound, from a text file: each line has a "
                  "part's begin and end in milliseconds of the source and its mode, as in "
                  "`1000 61500 2`, one after the other; lines that begin with # are left out. "
                  "Elsewhere `-a_content` holds. Other codecs do not read it.",
              .example = "-input talk.wav -output talk.wma -a_codec WMSP9 -a_contentedl parts.edl",
              .errors = "`Prepare to encode failed with error …` that names the line"}},
    {.name = "-a_folddown6to2",
     .values = {Integer<&Set::a_folddown6to2, &FoldDownSettings::surround>(),
                Integer<&Set::a_folddown6to2, &FoldDownSettings::center>(),
                Integer<&Set::a_folddown6to2, &FoldDownSettings::lfe>()},
     .help = "[-a_folddown6to2] <surround mix> <center mix> <LFE>\n"
             "    Specifies how a player mixes six channels down to two: by how much it\n"
             "    lowers the surround channels, the center and the low-frequency channel.\n"
             "    Valid numbers are 0 to 144. They are converted to negative numbers.\n"
             "    Example: -a_folddown6to2 10 3 3 stores -10, -3 and -3.\n",
     .note =
         {.accepts = "three numbers from 0 to 144",
          .fallback = "3 3 144, the levels of ITU-R BS.775",
          .effect =
              "How two channels are made of six: decibels by which surround, center and "
              "low-frequency channel are lowered (a gain of 10^(-decibels / 20); 144, the range of "
              "24-bit sound, leaves a channel out), stored negated as SurroundMix, CenterMix and "
              "LFEMix for players. A source with more than two channels is mixed by them when its "
              "format has two; all gains are then lowered together so that nothing can overload.",
          .example = "-input film.avi -output film.wmv -a_folddown6to2 10 3 3",
          .errors = "a number above 144, where the sound is mixed"}},
    {.name = "-a_formats",
     .show = &CommandActions::ListAudioFormats,
     .help = "[-a_formats]\n"
             "    Lists the audio formats of every codec, as values for -a_setting.\n"
             "    It must be the only word of a command.\n",
     .note = {.accepts = "alone",
              .effect = "Lists the audio formats of each codec and mode.",
              .example = "-a_formats",
              .errors = "as `-devices`"}},
    {.name = "-a_mode",
     .values = {Integer<&Set::a_mode>()},
     .help = "[-a_mode] <mode_number>\n"
             "    Specifies the audio encoding mode:\n"
             "    0: 1-pass CBR (default).\n"
             "    1: 2-pass CBR.\n"
             "    2: Quality-based VBR.\n"
             "    3: Bit rate-based VBR (two-pass).\n"
             "    4: Bit rate-based peak VBR (two-pass).\n",
     .note = {.accepts = "0 to 4, see Modes",
              .fallback = "0",
              .effect = "How the sound's rate is held.",
              .example = "-input talk.wav -output talk.wma -a_mode 1",
              .errors = "`Invalid -a_mode <mode_number>`; the codec has no such mode"}},
    {.name = "-a_peakbitrate",
     .values = {Integer<&Set::a_peakbitrate>()},
     .help = "[-a_peakbitrate] <peak bit rate>\n"
             "    Specifies the peak bit rate in bits per second. Used with -a_mode 4.\n"
             "    Default: 1.5 times the audio bit rate.\n",
     .note = {.accepts = "bits per second",
              .fallback = "1.5 times the rate",
              .effect = "The highest rate of `-a_mode 4`.",
              .example = "-input talk.wav -output talk.wma -a_mode 4 -a_peakbitrate 128000",
              .errors = "a peak below the average"}},
    {.name = "-a_peakbuffer",
     .values = {Integer<&Set::a_peakbuffer>()},
     .help = "[-a_peakbuffer] <peak buffer>\n"
             "    Specifies the peak buffer in milliseconds. Used with -a_mode 4.\n"
             "    Default: 3000 msec.\n",
     .note = {.accepts = "milliseconds",
              .fallback = "3000",
              .effect = "The buffer over which `-a_mode 4` holds its peak.",
              .example = "-input talk.wav -output talk.wma -a_mode 4 -a_peakbuffer 5000",
              .errors = kNoRate}},
    {.name = "-a_setting",
     .values = {Text<&Set::a_setting>()},
     .help = "[-a_setting] <setting>\n"
             "    Specifies the audio format. -a_formats lists the formats of each codec.\n"
             "    The default is 64_44_2.\n"
             "\n"
             "    <bit rate>_<sampling rate>_<channels>\n"
             "    Kilobits per second, kilohertz and number of channels.\n"
             "    Sampling rates are 8, 11, 16, 22, 32, 44, 48, 88 and 96.\n"
             "    Example: 64_44_2 is 64 Kbps, 44.1 kHz, stereo.\n"
             "\n"
             "    Q<quality>_<sampling rate>_<channels>\n"
             "    The same for quality-based VBR, with a quality in place of the bit rate.\n"
             "    It sets -a_mode to 2.\n"
             "    Example: Q75_44_2 is quality 75, 44.1 kHz, stereo.\n"
             "\n"
             "    <bit rate>_<sampling rate>_<channels>_<bits per sample>\n"
             "    For the professional codec (WMA9PRO). Bits per sample are 16, 20 or 24.\n"
             "    Without a profile, a setting of four parts selects this codec.\n"
             "    The default is 128_44_2_24, and Q75_44_2_24 for quality-based VBR.\n"
             "\n"
             "    Q100_<sampling rate>_<channels>_<bits per sample>\n"
             "    For the lossless codec (WMA9LSL). The quality is always 100.\n"
             "    The default is Q100_44_2_16.\n",
     .note =
         {.accepts =
              "RATE_KHZ_CHANNELS, QQUALITY_KHZ_CHANNELS, either with _BITS; see Audio formats",
          .fallback = "see Defaults",
          .effect = "The sound's format. A setting that begins with Q sets `-a_mode 2`; four "
                    "fields without Q100 select WMA9PRO in a custom profile.",
          .example = "-input talk.wav -output talk.wma -a_setting 128_44_2",
          .errors =
              "`Invalid audio bit rate …`, `Invalid audio sample rate …`, `Invalid audio channels "
              "…`, `Invalid bits per sample …`, `Invalid format … expecting integer value`; a "
              "format that the codec has not is refused with the near ones that it has"}},
    {.name = "-audioonly",
     .flag = &Set::audioonly,
     .help = "[-audioonly]\n"
             "    Encodes only the audio of the input file. Files get the extension .wma.\n",
     .note = {.accepts = "no value",
              .fallback = "off",
              .effect = "Encodes the sound alone; names get .wma. Stays on for later commands.",
              .example = "-input film.avi -output film -audioonly",
              .errors = "the file has no sound"}},
};

}  // namespace

OptionBlock AudioOptions() { return {kHeading, kOptions}; }

}  // namespace cli
