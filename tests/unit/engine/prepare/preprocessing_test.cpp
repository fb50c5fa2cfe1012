// What the filter number asks for.
#include "unit/engine/prepare/plan_session.h"

namespace engine {
namespace {

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
