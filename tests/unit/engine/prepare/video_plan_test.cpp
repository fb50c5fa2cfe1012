// A plan's frames: their rate, the level of the device that is to play them, and what the filter
// number asks for.
#include "support/row_name.h"
#include "unit/engine/prepare/plan_session.h"

namespace engine {
namespace {

using platform::SourceType;
using platform::VbrMode;
using test_support::ErrorNumber;
using test_support::FilmInfo;

struct DeviceCase {
    const char* why;
    const char* target;
    int codec;
    int width, height, fps, kilobits;
    VbrMode mode;
    std::vector<std::string> words;  // of the refusal, or the level that is chosen
    std::uint32_t refused = 0;
};
constexpr std::uint32_t kInvalid = platform::kInvalidArgument;
constexpr VbrMode kConstant = VbrMode::Constant;
// clang-format off
const DeviceCase kDeviceCases[] = {
    // why                                target   codec size     fps kbps   mode
    {"the smallest level that holds it",  "SP",    2, 176, 144, 15,    96, kConstant, {"SP@LL"}},
    {"by its rate",                       "SP",    2, 176, 144, 15,   200, kConstant, {"SP@ML"}},
    {"by its size",                       "MP",    2, 640, 480, 15,   200, kConstant, {"MP@ML"}},
    {"small frames may be more",          "MP",    2, 176, 144, 29,   200, kConstant, {"MP@LL"}},
    {"a level by name",                   "MP@HL", 2, 176, 144, 15,    96, kConstant, {"MP@HL"}},
    {"a quality may take all",            "SP",    2, 176, 144, 15,    96, VbrMode::Quality, {"SP@ML"}},
    {"too large",                         "SP",    2, 640, 480, 15,   200, kConstant, {"640x480", "352x288", "-v_width"}, kInvalid},
    {"too fast",                          "SP",    2, 352, 288, 25,   200, kConstant, {"25", "352x288 at 15", "-v_framerate"}, kInvalid},
    {"too many bits",                     "SP",    2, 352, 288, 15,   500, kConstant, {"500000", "384000", "-v_bitrate"}, kInvalid},
    {"too many at the peak",              "MP@LL", 2, 320, 240, 15,  1500, VbrMode::Peak, {"2250000", "2000000", "-v_peakbitrate"}, kInvalid},
    {"no such profile",                   "XP",    2, 320, 240, 15,   200, kConstant, {"XP", "SP or MP"}, kInvalid},
    {"interlaced profiles",               "CP",    2, 320, 240, 15,   200, kConstant, {"CP", "-v_profile MP"}, platform::kNotImplemented},
    {"another codec",                     "SP",    1, 176, 144, 15,    96, kConstant, {"Windows Media Video 8", "-v_codec WMV9"}, kInvalid},
};
// clang-format on

class DeviceConformance : public testing::TestWithParam<DeviceCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, DeviceConformance, testing::ValuesIn(kDeviceCases),
                         test_support::NameOfRow());

TEST_P(DeviceConformance, ChoosesALevelOrSaysWhatExceedsIt) {
    const DeviceCase& c = GetParam();
    FilmSession session;
    session.profile.SetVBRMode(SourceType::Video, 0, c.mode);
    platform::WMEncAudience& audience = session.Audience();
    audience.SetVideoCodec(0, c.codec);
    audience.SetVideoWidth(0, c.width);
    audience.SetVideoHeight(0, c.height);
    audience.SetVideoFPS(0, c.fps * 1000);
    audience.SetVideoBitrate(0, c.kilobits * 1000);
    audience.SetProperty(SourceType::Video, 0, "DeviceConformanceTarget", std::string(c.target));
    if (c.refused == 0) {
        const VideoPlan plan = *session.Plan().video;
        EXPECT_EQ(plan.conformance, c.words.front());
        EXPECT_EQ(plan.simple_profile, c.target[0] == 'S');
        EXPECT_GE(plan.level_rate_bps, c.kilobits * 1000);
        EXPECT_GT(plan.level_buffer_bits, 0);
        return;
    }
    EXPECT_EQ(ErrorNumber([&] { session.Plan(); }, c.words), c.refused);
}

TEST(VideoPlan, ExpectedRateIsTheLower) {
    struct Case {
        const char* why;
        std::int32_t ceiling;
        Ratio source;
        std::int32_t expected;
    };
    const Case cases[] = {
        {"source below", 30000, {24000, 1001}, 23976},
        {"ceiling below", 15000, {30, 1}, 15000},
        {"unknown source", 15000, {0, 1}, 15000},
    };
    for (const Case& c : cases) {
        Session session;
        MediaFileInfo info = FilmInfo();
        info.video->frame_rate = c.source;
        session.engine.media["/home/film.avi"] = info;
        session.OpenFilm();
        session.Audience().SetVideoFPS(0, c.ceiling);
        EXPECT_EQ(session.Plan().video->expected_rate, c.expected) << c.why;
    }
}

TEST(Preprocessing, OptimizationNamesTheFilter) {
    struct Case {
        std::int32_t optimization;
        bool deinterlace, detect;
        std::optional<TelecinePattern> pattern;
        std::int32_t rate;
    };
    const Case cases[] = {
        {0, false, false, {}, 29970},
        {1, false, false, {}, 29970},
        {2, true, false, {}, 29970},
        {3, false, true, {}, 29970},
        {35, false, false, {{0, false}}, 23976},
        {51, false, false, {{1, false}}, 23976},
        {67, false, false, {{2, false}}, 23976},
        {83, false, false, {{3, false}}, 23976},
        {99, false, false, {{4, false}}, 23976},
        {115, false, false, {{0, true}}, 23976},
        {131, false, false, {{1, true}}, 23976},
        {147, false, false, {{2, true}}, 23976},
        {163, false, false, {{3, true}}, 23976},
        {179, false, false, {{4, true}}, 23976},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.optimization);
        FilmSession session;
        session.Video().SetOptimization(c.optimization);
        const VideoPlan plan = *session.Plan().video;
        EXPECT_EQ(plan.deinterlace, c.deinterlace);
        EXPECT_EQ(plan.remove_telecine, c.detect);
        ASSERT_EQ(plan.telecine.has_value(), c.pattern.has_value());
        if (c.pattern) {
            EXPECT_EQ(plan.telecine->first_frame, c.pattern->first_frame);
            EXPECT_EQ(plan.telecine->bottom_first, c.pattern->bottom_first);
        }
        EXPECT_EQ(plan.expected_rate, c.rate);
    }
}

TEST(Preprocessing, FieldsAreCodedWhereTheCodecHasThem) {
    struct Case {
        std::int32_t optimization;
        bool interlaced;  // by the profile
        FieldCoding fields;
    };
    const Case cases[] = {
        {0, false, FieldCoding::None},
        {0, true, FieldCoding::AsTheSource},
        // A source that is made of whole frames, by itself or by a filter, outweighs a profile that
        // an earlier command made interlaced.
        {1, true, FieldCoding::None},
        {2, true, FieldCoding::None},
        {3, true, FieldCoding::None},
        {0x23, true, FieldCoding::None},
        {4, true, FieldCoding::AsTheSource},
        {0x2004, true, FieldCoding::TopFirst},
        {0x3004, true, FieldCoding::BottomFirst},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.optimization);
        FilmSession session;
        session.Audience().SetVideoCodec(0, 4);
        session.Video().SetOptimization(c.optimization);
        session.profile.SetInterlaceMode(0, c.interlaced);
        EXPECT_EQ(session.Plan().video->fields, c.fields);
    }
}

}  // namespace
}  // namespace engine
