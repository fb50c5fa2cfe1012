// A recording leaves the files that are there, and says under which name.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "clips.h"
#include "engine/outputs/asf/asf_file.h"
#include "support/asf_reader.h"
#include "support/row_name.h"

namespace engine::asf {
namespace {

namespace fs = std::filesystem;
using test_support::FileText;

void WriteText(const std::string& path) { std::ofstream(path) << "recorded before"; }

struct Case {
    const char* why;
    std::string name;
    std::vector<std::string> there;  // besides
    std::string kept;                // "" = nothing was there
};
const Case kCases[] = {
    {"nothing was there", "a.wmv", {}, ""},
    {"the first number", "b.wmv", {}, "b-1.wmv"},
    {"the next one", "c.wmv", {"c-1.wmv", "c-2.wmv"}, "c-3.wmv"},
    {"not one that a repair would give", "d.wmv", {"d-1.wmv.part"}, "d-2.wmv"},
    {"no extension", "e", {}, "e-1"},
    {"dots in the stem", "f.g.wmv", {}, "f.g-1.wmv"},
    {"a name that has no room", std::string(250, 'x') + ".wmv", {}, "*"},
};

class KeptFiles : public testing::TestWithParam<Case> {};
INSTANTIATE_TEST_SUITE_P(Rows, KeptFiles, testing::ValuesIn(kCases), test_support::NameOfRow());

TEST_P(KeptFiles, GetAFreeNameWhenARecordingTakesTheirs) {
    const Case& row = GetParam();
    const clips::Folder scratch;
    const std::string path = scratch.Path(row.name);
    for (const std::string& name : row.there) WriteText(scratch.Path(name));
    AsfFile sink(path, true);
    clips::WriteAll(sink, clips::MadeUp(1000));
    if (!row.kept.empty()) WriteText(path);  // also one that came meanwhile
    sink.Finish();
    EXPECT_GT(asf_reader::ReadFile(path).header.play_duration, 0U);
    std::vector<std::string> others;
    for (const auto& entry : fs::directory_iterator(fs::path(path).parent_path()))
        if (entry.path() != path) others.push_back(entry.path().filename());
    ASSERT_EQ(others.size(), row.there.size() + (row.kept.empty() ? 0 : 1));
    for (const std::string& name : others)
        EXPECT_EQ(FileText(scratch.Path(name)), "recorded before");
    if (row.kept.empty()) {
        EXPECT_EQ(sink.NoticeText(), "");
        return;
    }
    const std::string kept = row.kept == "*" ? others.front() : row.kept;
    EXPECT_THAT(others, testing::Contains(kept));
    EXPECT_THAT(sink.NoticeText(), testing::HasSubstr(scratch.Path(kept)));
}

TEST(KeptFile, KeepsItsNameWhenTheRecordingFails) {
    const clips::Folder scratch;
    const std::string path = scratch.Path("a.wmv");
    WriteText(path);
    AsfFile sink(path, true);
    clips::WriteAll(sink, clips::MadeUp(1000));
    sink.Abandon();
    EXPECT_EQ(FileText(path), "recorded before");
    EXPECT_EQ(sink.NoticeText(), "");
}

}  // namespace
}  // namespace engine::asf
