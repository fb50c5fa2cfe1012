#include "platform/host/program_info.h"

namespace platform::host {

namespace {

constexpr const char* kConsoleUsage =
    "Usage: tessivo-console [--json] [--explain] [WORD ... | -]\n"
    "       tessivo-console [--json] --save-session FILE WORD ...\n"
    "       tessivo-console [--json] --repair FILE\n"
    "       tessivo-console --version | --help\n"
    "\n"
    "Runs one command of the encoder's command line, a word an argument. The shell's quotation\n"
    "marks keep blanks in a word. Without words, on a terminal, commands are read line by line;\n"
    "\"exit\", \"quit\" or the end of the input leave. \"tessivo-console -help\" lists the "
    "options.\n"
    "\n"
    "  tessivo-console -input clip.avi -output clip.wmv -profile av350\n"
    "  tessivo-console -input clip.avi -output out -profile av100 -title \"A day at sea\"\n";

constexpr const char* kWindowUsage =
    "Usage: tessivo [WORD ...]\n"
    "       tessivo --version | --help\n"
    "\n"
    "Opens the window and runs the command that the words make up, if there are any. A command\n"
    "can also be typed into its command box; tessivo-console takes the same ones on a terminal.\n";

constexpr const char* kConsoleRest =
    "\n"
    "Standard output has the command's lines; status, messages and, on a terminal, a progress "
    "line\n"
    "go to standard error. Ctrl+C stops an encoding and keeps what was encoded as a whole file; a\n"
    "second Ctrl+C ends the program at once.\n"
    "\n"
    "A file grows as FILE.part and takes its name when it is whole. \"--repair FILE\" makes one "
    "that\n"
    "was cut off whole again: what it holds up to the cut gets its lengths and its index back. "
    "The\n"
    "file is replaced when the result has been read back; FILE.part then becomes FILE, unless "
    "that\n"
    "exists. A file that is whole is left alone.\n"
    "\n"
    "  -          reads commands from the standard input, a line each, split at single blanks;\n"
    "             settings carry over from line to line; empty lines and lines that begin with #\n"
    "             are passed over\n"
    "  --explain  prints what the command would set up instead of running it, and writes nothing;\n"
    "             as the first word of a line it explains that line\n"
    "  --save-session FILE\n"
    "             saves what the command would set up as a session file instead of running it;\n"
    "             \"-wme FILE\" runs it, and options beside that change it\n"
    "  --json     writes progress and reports to standard output, a JSON object a line; the\n"
    "             command's lines go to standard error\n"
    "\n"
    "Exit status (of several commands, the highest):\n"
    "  0    done, listed or shown\n"
    "  1    refused: the command or its set-up is wrong\n"
    "  2    failed while running; of a folder, any of its files\n"
    "  130  stopped by a signal or by a closed pipe\n";

constexpr const char* kEnvironment =
    "\n"
    "Environment:\n"
    "  TESSIVO_DRIVE_ROOT    folder that holds the drives of names such as C:\\clips\\a.avi;\n"
    "                        the home folder when not set\n"
    "  TESSIVO_SOUND         whose sound is recorded with the screen: microphone, desktop, both,\n"
    "                        or the number of an audio device; the default one when not set\n"
    "  TESSIVO_SCREEN        the part of an X11 screen that is recorded: region:WxH+X+Y,\n"
    "                        monitor:N or window:TITLE; all of it when not set\n"
    "  TESSIVO_POINTER       off leaves the mouse pointer out of recordings of the screen\n"
    "  LC_ALL, LC_CTYPE, LANG  encoding of configuration files\n";

}  // namespace

std::string UsageText(const ProgramInfo& program) {
    return program.has_window ? kWindowUsage : kConsoleUsage;
}

std::optional<std::string> AnswerAboutProgram(const ProgramInfo& program,
                                              const std::vector<std::string>& words) {
    if (words.size() != 1) return std::nullopt;
    if (words[0] == "--version") return program.name + " " + program.version + "\n";
    if (words[0] != "--help") return std::nullopt;
    return UsageText(program) + (program.has_window ? "" : kConsoleRest) + kEnvironment;
}

std::string JoinWords(const std::vector<std::string>& words) {
    std::string joined = words.empty() ? std::string() : words.front();
    for (std::size_t i = 1; i < words.size(); ++i) joined.append(" ").append(words[i]);
    return joined;
}

}  // namespace platform::host
