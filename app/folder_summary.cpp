#include "app/folder_summary.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace app {

namespace {

// Media that can be encoded one by one, but that walks leave out.
constexpr std::string_view kLeftOut[] = {".3gp", ".aac", ".aiff", ".dv",  ".flac", ".flv", ".m2ts",
                                         ".m4a", ".m4v", ".mkv",  ".mov", ".mp2",  ".mp4", ".mts",
                                         ".mxf", ".oga", ".ogg",  ".ogv", ".opus", ".ts",  ".webm"};

std::string Files(int count) { return fmt::format("{} file{}", count, count == 1 ? "" : "s"); }

std::string Extension(const std::string& extension) {
    return extension.empty() ? "without an extension" : extension;
}

}  // namespace

std::string FolderSummary(const platform::CommandReport& report) {
    std::vector<std::string> counts;
    if (report.files_completed > 0)
        counts.push_back(fmt::format("{} encoded", Files(report.files_completed)));
    if (report.files_failed > 0) counts.push_back(fmt::format("{} failed", report.files_failed));
    int skipped = 0;
    std::vector<std::string> kinds;
    std::vector<std::string> left_out;
    for (const auto& [extension, count] : report.files_skipped) {
        skipped += count;
        kinds.push_back(fmt::format("{} {}", count, Extension(extension)));
        if (std::find(std::begin(kLeftOut), std::end(kLeftOut), extension) != std::end(kLeftOut))
            left_out.push_back(extension);
    }
    if (skipped > 0)
        counts.push_back(fmt::format("{} skipped ({})", skipped, fmt::join(kinds, ", ")));
    std::string text = report.files_completed == 0 ? "Nothing was encoded" : "";
    if (!text.empty() && !counts.empty()) text += ": ";
    text += fmt::format("{}.", fmt::join(counts, ", "));
    if (!left_out.empty())
        text += fmt::format(
            " A folder's {} {} not taken; a loop over them is (recipes: \"Files "
            "that folders leave out\").",
            fmt::join(left_out, ", "), left_out.size() == 1 ? "is" : "are");
    return text;
}

}  // namespace app
