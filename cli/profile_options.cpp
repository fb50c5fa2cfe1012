// Ready-made profiles and profile files.
#include "cli/option_row.h"

namespace cli {
namespace {

constexpr std::string_view kHeading =
    "\n"
    "\n"
    "Usage for profiles.\n"
    "    Audio and video arguments that follow a profile override its parameters.\n"
    "    Example: -profile av350 -v_bitrate 280000\n"
    "\n";

constexpr Option kOptions[] = {
    {.name = "-profile",
     .values = {Text<&Set::profile>()},
     .help = "[-profile] <profile code>\n"
             "    Specifies a predefined profile. The code may be typed in upper or lower\n"
             "    case. A screen profile captures the screen; see -duration.\n"
             "\n"
             "Codes and basic descriptions for the predefined profiles:\n"
             "Audio/Video:\n"
             "    av20: Profile_AudioVideo_Modem_28K (actual rate: 20Kbps)\n"
             "    av32: Profile_AudioVideo_Modem_56K (32 Kbps)\n"
             "    av100: Profile_AudioVideo_LAN_100K (100 Kbps)\n"
             "    av225: Profile_AudioVideo_LAN_256K (225 Kbps)\n"
             "    av350: Profile_AudioVideo_LANDSL_384K (350 Kbps)\n"
             "    av450: Profile_AudioVideo_LANDSL_768K (450 Kbps)\n"
             "    av700: Profile_AudioVideo_NearBroadcast_700K (700 Kbps)\n"
             "    av1400: Profile_AudioVideo_NearBroadcast_1400K (1400 Kbps)\n"
             "    av350pal: Profile_AudioVideo_Broadband_PAL_384K (350 Kbps)\n"
             "    av700pal: Profile_AudioVideo_NearBroadcast_PAL_700K (700 Kbps)\n"
             "    av100_2p: Profile_AudioVideo_LAN_100K_2Pass (100 Kbps)\n"
             "    av350_2p: Profile_AudioVideo_LANDSL_384K_2Pass (350 Kbps)\n"
             "    av600vbr: Profile_AudioVideo_FilmVBR_600K (600 Kbps)\n"
             "    avq97vbr: Profile_AudioVideo_FilmVBR_Quality97 (Quality 97)\n"
             "\n"
             "Audio-only:\n"
             "    a20_1: Profile_AudioOnly_FMRadioMono_28K (20 Kbps)\n"
             "    a20_2: Profile_AudioOnly_FMRadioStereo_28K (20 Kbps)\n"
             "    a32: Profile_AudioOnly_Modem_56K (32 Kbps)\n"
             "    a48: Profile_AudioOnly_NearCDQuality_48K (48 Kbps)\n"
             "    a64: Profile_AudioOnly_CDQuality_64K (64 Kbps)\n"
             "    a96: Profile_AudioOnly_CDAudiophileQuality_96K (96 Kbps)\n"
             "    a128: Profile_AudioOnly_CDAudiophileQuality_128K (128 Kbps)\n"
             "\n"
             "Video-only:\n"
             "    v20: Profile_VideoOnly_Modem_28K (20 Kbps)\n"
             "    v32: Profile_VideoOnly_Modem_56K (32 Kbps)\n"
             "\n"
             "Screen Capture:\n"
             "    scrn:  Profile_Screen Capture\n"
             "    scrna: Profile_Screen_Capture with Audio\n"
             "    scrnab: Profile_Screen Capture with Basic Audio\n"
             "\n"
             "    scrn10:  Profile_Screen Capture\n"
             "    scrn10a: Profile_Screen Capture with Audio\n"
             "\n"
             "    scrn15:  Profile_Screen Capture\n"
             "    scrn15a: Profile_Screen Capture with Audio\n"
             "\n"
             "    scrn24:  Profile_Screen Capture\n"
             "    scrn24a: Profile_Screen Capture with Audio\n"
             "\n"
             "    scrn30:  Profile_Screen Capture\n"
             "    scrn30a: Profile_Screen Capture with Audio\n",
     .note =
         {.accepts = "a code of the table below, in any case",
          .fallback = "a custom profile, see Defaults",
          .effect =
              "Sets codecs, rates, size and buffers at once; audio and video options beside it "
              "override single values. A code that begins with a (but not av) sets `-audioonly`, "
              "one with v `-videoonly`. Codes that begin with scrn capture the screen, or the part "
              "of it that TESSIVO_SCREEN names, until Stop or for `-duration` seconds; "
              "TESSIVO_SOUND says whose sound, of those that have sound. The frame rate of a file "
              "counts where it is higher than the profile's.",
          .example = "-input film.avi -output film.wmv -profile av350",
          .errors = "`No predefined profile found.`"}},
    {.name = "-loadprofile",
     .values = {Text<&Set::loadprofile>()},
     .help = "\n"
             "[-loadprofile] <profile file name>\n"
             "    Specifies a profile file (.prx) to use instead of a predefined profile.\n"
             "    Enclose names that contain blanks in quotation marks.\n",
     .note =
         {.accepts = "a file name",
          .fallback = "none",
          .effect =
              "Takes the profile from a file; audio and video options beside it override single "
              "values. The first audio and the first video stream count, and a line names the "
              "others. A stream that the profile has not is left out of the output. The frame "
              "rate is the file's, raised to `-v_framerate`, to the input's or to 30; "
              "variable bit rates take two passes.",
          .example = "-input film.avi -output film.wmv -loadprofile mine.prx",
          .errors = "`Invalid profile: 0x80070002 …` when there is no such file, `Invalid "
                    "profile: 0x8007000D …` when it is no profile (with line and column where "
                    "it breaks), `Invalid profile: 0x80004001 …` for a codec that is not "
                    "encoded here"}},
};

}  // namespace

OptionBlock ProfileOptions() { return {kHeading, kOptions}; }

}  // namespace cli
