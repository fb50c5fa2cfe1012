// What a person reads at the end of a folder.
#include "app/folder_summary.h"

#include <gmock/gmock.h>

namespace app {
namespace {

TEST(FolderSummary, CountsAndNamesWhatWasLeftOut) {
    struct Case {
        int completed, failed;
        std::map<std::string, int> skipped;
        const char* text;
    };
    const Case cases[] = {
        {3, 0, {}, "3 files encoded."},
        {1,
         2,
         {{"", 1}, {".txt", 4}},
         "1 file encoded, 2 failed, 5 skipped (1 without an extension, 4 .txt)."},
        {0, 0, {}, "Nothing was encoded."},
        {0, 1, {}, "Nothing was encoded: 1 failed."},
        {0,
         0,
         {{".mkv", 1}, {".mp4", 7}},
         "Nothing was encoded: 8 skipped (1 .mkv, 7 .mp4). A folder's .mkv, .mp4 are not taken; a "
         "loop over them is (recipes: \"Files that folders leave out\")."},
    };
    for (const Case& c : cases) {
        platform::CommandReport report;
        report.files_completed = c.completed;
        report.files_failed = c.failed;
        report.files_skipped = c.skipped;
        EXPECT_EQ(FolderSummary(report), c.text);
    }
}

}  // namespace
}  // namespace app
