#include "cli/help.h"

#include <cstddef>
#include <string>

#include "cli/option_table.h"

namespace cli {
namespace {

void AppendLines(std::string_view text, std::vector<std::string_view>& lines) {
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
}

}  // namespace

std::vector<std::string_view> HelpLines() {
    std::vector<std::string_view> lines;
    for (const OptionBlock& block : OptionBlocks()) {
        AppendLines(block.heading, lines);
        for (const Option& option : block.options) AppendLines(option.help, lines);
    }
    return lines;
}

void ShowHelp(platform::OutputPane& pane) {
    for (const std::string_view line : HelpLines()) pane.OutputInfo(std::string(line));
}

void ShowHelpChm(platform::FileSystem& files, platform::Shell& shell) {
    const platform::SpecialFolder folder =
        files.GetSpecialFolder(platform::SpecialFolderKind::Windows);
    const std::string viewer = folder.drive + "\\" + folder.name + "\\hh.exe";
    const std::string help_file =
        folder.drive + "\\program files\\windows media components\\encoder\\wmencutil.chm";
    shell.Run(viewer + " \"" + help_file + "\"", platform::WindowStyle::ShownWithoutFocus, false);
}

}  // namespace cli
