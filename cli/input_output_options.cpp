// What is read and written, and how the program is told.
#include "cli/option_row.h"

namespace cli {
namespace {

constexpr std::string_view kHeading =
    "Encode from files or devices to Windows Media files or streams. Supported\n"
    "source file formats are .wmv, .wma, .asf, .avi, .wav, .mpg, .mp3, .bmp,\n"
    "and .jpg.\n"
    "\n"
    "\n"
    "Usage for I/O and statistics.\n"
    "\n";

constexpr Option kOptions[] = {
    {.name = "-wme",
     .values = {Text<&Set::wme>()},
     .help = "[-wme] <Windows Media Encoder session file>\n"
             "    Specifies a session file (.wme) whose sources, profile and output are\n"
             "    loaded. Options that stand beside it are applied to what it holds.\n"
             "    Enclose names that contain blanks in quotation marks.\n",
     .note = {.accepts = "a file name",
              .fallback = "none",
              .effect = "Takes sources, profile, outputs and title fields from a session file, as "
                        "`--save-session` writes it; the other options of the command are applied "
                        "to that, and `-input` takes the place of its files. Of several source "
                        "groups the first counts, of several sources of a kind the first. A line "
                        "says how much of a file was not understood.",
              .example = "-wme job.wme -output film.wmv",
              .errors = "`Loading the session (.wme) file failed: …` for what cannot be read or is "
                        "no session; a source that is not there when the run is prepared"}},
    {.name = "-input",
     .values = {InputName<&Set::input>()},
     .help = "[-input] <file or directory name>\n"
             "    Specifies the file or the directory to encode. Of a directory, all .avi,\n"
             "    .wav, .mpg, .mpeg, .vob, .wmv, .wma, .mp3 and .asf files are encoded, its\n"
             "    subdirectories included.\n"
             "    Enclose names that contain blanks in quotation marks.\n"
             "    A command of -input and a file alone shows what the file holds.\n",
     .note = {.accepts = "a media file or a folder",
              .fallback = "none",
              .effect =
                  "What is encoded: every media file that the FFmpeg libraries open, still "
                  "pictures too (10 seconds, or the `-duration` of the command). Of a folder, the "
                  "files ending in .avi, .wav, .mpg, .mpeg, .vob, .wmv, .wma, .mp3 and .asf are "
                  "encoded one after another, and those of its sub-folders into sub-folders of the "
                  "output: what is there when the command begins, each real folder once, however "
                  "many links lead to it, and no pipe, socket or device. As the whole command, "
                  "`-input FILE` shows what the file holds instead.",
              .example = "-input film.avi -output film.wmv",
              .errors = "`Error: 0x80070002 - …` when there is no such file, `Error: 0x8007000D - "
                        "…` when it is no media file"}},
    {.name = "-adevice",
     .flag = &Set::device_input,
     .values = {IntegerOr<&Set::adevice>(0)},
     .help = "[-adevice] <audio device number>\n"
             "    Specifies the audio capture device. -devices lists the numbers.\n"
             "    The default number is 0. -duration is required, -input must not be given.\n",
     .note = {.accepts = "a number that `-devices` lists; may be left out",
              .fallback = "0 when left out",
              .effect = "Captures sound from a device. Needs `-duration`, and no `-input`.",
              .example = "-adevice 0 -duration 30 -output talk.wma",
              .today = Today::Hardware,
              .errors =
                  "`Error: Invalid audio device number specified`; `Duration must be specified "
                  "when capturing from devices.`; the device is not there or cannot be opened"}},
    {.name = "-vdevice",
     .flag = &Set::device_input,
     .values = {IntegerOr<&Set::vdevice>(0)},
     .help = "[-vdevice] <video device number>\n"
             "    Specifies the video capture device. -devices lists the numbers.\n"
             "    The default number is 0. -duration is required, -input must not be given.\n",
     .note = {.accepts = "a number that `-devices` lists; may be left out",
              .fallback = "0 when left out",
              .effect = "Captures picture from a device. Needs `-duration`, and no `-input`.",
              .example = "-vdevice 0 -duration 30 -output room.wmv",
              .today = Today::Hardware,
              .errors = "`Error: Invalid video device number specified`; otherwise as `-adevice`"}},
    {.name = "-output",
     .values = {Text<&Set::output>()},
     .help = "[-output] <file or directory name>\n"
             "    Specifies the file or the directory to write. Directories that do not\n"
             "    exist are made. A directory is required when -input is a directory.\n"
             "    In a directory, the new file takes the name of the input file.\n"
             "    A name without an extension gets .wmv, or .wma when there is no video.\n"
             "    Enclose names that contain blanks in quotation marks.\n",
     .note = {.accepts = "a file or a folder",
              .fallback = "none; a run needs one, or -broadcast",
              .effect = "What is written. Folders on the way are made. In a folder that exists, "
                        "the file takes the input's name. A name without an extension gets .wmv, "
                        "or .wma without a picture. A file that is there already is replaced, but "
                        "none that the same command encodes.",
              .example = "-input film.avi -output converted/film",
              .errors = "the output is the input; there is no output; `Error: No output directory "
                        "specified` for a folder as input"}},
    {.name = "-outputstring",
     .values = {Text<&Set::outputstring>()},
     .help = "[-outputstring] <string>\n"
             "    Specifies what is appended to each file name when -input is a directory.\n"
             "    Example: with _low, the file clip.mpg is written as clip_low.wmv.\n",
     .note = {.accepts = "a text",
              .fallback = "none",
              .effect = "Is appended to each name of a folder's outputs, before the extension.",
              .example = "-input holiday -output converted -outputstring _low -profile av100",
              .errors = kText}},
    {.name = "-broadcast",
     .values = {IntegerOr<&Set::broadcast>(8080)},
     .help = "[-broadcast] <port>\n"
             "    Specifies the HTTP port that players connect to during the session.\n"
             "    A file can be written at the same time. The default port is 8080.\n",
     .note = {.accepts = "a port; may be left out",
              .fallback = "8080 when left out",
              .effect = "Serves the stream to players over HTTP, beside -output or without it.",
              .example = "-input film.avi -broadcast 8080 -profile av350",
              .today = Today::Hardware,
              .errors = "a number that is no port; a port that is in use or may not be opened"}},
    {.name = "-push",
     .values = {Text<&Set::push, &PushSettings::server_name>(),
                Text<&Set::push, &PushSettings::publishing_point>(),
                OptionalText<&Set::push, &PushSettings::template_name>()},
     .note =
         {.values = "<server> <publishing point> <template>",
          .accepts = "two texts, and a third that may be left out",
          .fallback = "none",
          .effect =
              "Sends the stream to a server's publishing point, made after the template where it "
              "does not exist.",
          .example = "-input film.avi -output film.wmv -push media.example live -profile av350",
          .today = Today::Hardware,
          .errors = "a server that is not known, does not answer or refuses the stream"}},
    {.name = "-time",
     .values = {Integer<&Set::time, &TimeSettings::start>(),
                EndMark<&Set::time, &TimeSettings::end>()},
     .help = "[-time] <start time> <end time>\n"
             "    Specifies the part of the input file to encode, in milliseconds.\n"
             "    An end time of 0, or the word end, stands for the end of the file.\n"
             "    Example: -time 60000 end leaves out the first minute.\n",
     .note = {.accepts = "milliseconds, and milliseconds or the word end (lower case)",
              .fallback = "the whole file",
              .effect = "The part of the input that is encoded. An end of 0 is the end of the "
                        "file; an end past it is the end of the file too.",
              .example = "-input film.avi -output film.wmv -time 500 1500",
              .errors =
                  "`Invalid format … expecting integer value`; a start past the end of the file"}},
    {.name = "-silent",
     .flag = &Set::silent,
     .help = "[-silent]\n"
             "    Leaves out the statistics that follow each file of a directory.\n",
     .note = {.accepts = "no value",
              .fallback = "off",
              .effect = "Prints no report after the files of a folder.",
              .example = "-input holiday -output converted -profile av100 -silent",
              .errors = "none"}},
    {.name = "-verbose",
     .values = {Integer<&Set::verbose>()},
     .note = {.values = "<level>",
              .accepts = "a whole number",
              .fallback = "2",
              .effect = "Is kept; nothing depends on it.",
              .example = "-input film.avi -output film.wmv -verbose 1",
              .errors = kNoRate}},
    {.name = "-config",
     .values = {kLoadName},
     .help = "[-config] <input configuration file>\n"
             "    Specifies a file whose first line holds options, separated by blanks.\n"
             "    Options of the command override those of the file.\n"
             "    The default extension is .weu.\n",
     .note = {.accepts = "a file name with its extension",
              .fallback = "none",
              .effect = "Reads options from a file's first line, separated by single blanks. Those "
                        "of the command itself count for more, wherever they stand.",
              .example = "-config job.weu -input film.avi -output film.wmv",
              .errors =
                  "`Configuration file … is empty`; a pipe; a line of more than a mebibyte; files "
                  "that name each other more than 16 deep"}},
    {.name = "-s_config",
     .values = {kSaveName},
     .help = "[-s_config] <output configuration file>\n"
             "    Specifies a file to which the options of this command are saved.\n"
             "    The command is then encoded as usual. The extension is .weu.\n",
     .note = {.accepts = "a file name; .weu is added when it is missing",
              .fallback = "none",
              .effect =
                  "Saves the words of this command, but for itself and a file name behind "
                  "`-config`, and then runs it. The file may be neither the input nor a pipe.",
              .example = "-input film.avi -output film.wmv -profile av100 -s_config saved",
              .errors = kText}},
    {.name = "-help",
     .show = &CommandActions::ShowHelp,
     .note = {.accepts = "alone; also -?, -all? and /?",
              .effect = "Prints the help.",
              .example = "-help",
              .errors = "as `-devices`"}},
    {.name = "-?", .show = &CommandActions::ShowHelp},
    {.name = "-all?", .show = &CommandActions::ShowHelp},
    {.name = "/?", .show = &CommandActions::ShowHelp},
    {.name = "-help?",
     .show = &CommandActions::ShowHelpChm,
     .note = {.accepts = "alone",
              .effect =
                  "Starts the help viewer of a system that has one for the encoder's help file.",
              .example = "-help?",
              .today = Today::Hardware,
              .errors = "`Error: 0x80070002 - …` where there is none"}},
};

}  // namespace

OptionBlock InputOutputOptions() { return {kHeading, kOptions}; }

}  // namespace cli
