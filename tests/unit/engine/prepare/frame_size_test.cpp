// How large frames are coded, and the shape of their pixels.
#include "support/row_name.h"
#include "unit/engine/prepare/plan_session.h"

namespace engine {
namespace {

using test_support::FilmInfo;

struct SizeCase {
    const char* why;
    int source_width, source_height;
    Ratio source_aspect;
    int codec;  // 1 takes even widths only, 2 even sides, 4 all
    int width, height;
    bool non_square;
    int out_width, out_height;
    Ratio out_aspect;
    Margins crop = {};
    Margins more = {};  // to make sides even
};
// clang-format off
constexpr Margins kCut = {80, 100, 5, 15};
const SizeCase kSizeCases[] = {
    // why, source, its pixels, codec, asked, non-square, coded, its pixels, cut off, and more
    {"the source's", 640, 480, {1, 1}, 1, 0, 0, false, 640, 480, {1, 1}},
    {"odd width where it must be even", 641, 481, {1, 1}, 1, 0, 0, false, 640, 481, {1, 1}, {}, {0, 1, 0, 0}},
    {"odd sides where they must be even", 641, 481, {1, 1}, 2, 0, 0, false, 640, 480, {1, 1}, {}, {0, 1, 0, 1}},
    {"an odd size that was asked for", 640, 480, {1, 1}, 2, 321, 201, false, 320, 200, {5, 6}},
    {"odd size elsewhere", 641, 481, {1, 1}, 4, 0, 0, false, 641, 481, {1, 1}},
    {"a wide picture in a narrow size", 1920, 1080, {1, 1}, 1, 320, 240, false, 320, 240, {4, 3}},
    {"a narrow one in a wide size", 640, 480, {1, 1}, 1, 640, 360, false, 640, 360, {3, 4}},
    {"off by a rounded pixel only", 1920, 1080, {1, 1}, 1, 854, 480, false, 854, 480, {1, 1}},
    {"more than 16 bits", 1919, 1079, {1, 1}, 4, 321, 241, false, 321, 241, {57809, 43294}},
    {"height follows", 640, 480, {1, 1}, 1, 320, 0, false, 320, 240, {1, 1}},
    {"width follows", 640, 360, {1, 1}, 1, 0, 180, false, 320, 180, {1, 1}},
    {"pixels keep their shape", 720, 576, {16, 15}, 1, 0, 0, false, 720, 576, {16, 15}},
    {"the shown shape counts", 720, 576, {16, 15}, 1, 0, 288, false, 384, 288, {1, 1}},
    {"asked sizes of the shown shape are square", 720, 576, {16, 15}, 1, 384, 288, false, 384, 288, {1, 1}},
    {"unless they need not be", 720, 576, {16, 15}, 1, 360, 576, true, 360, 576, {32, 15}},
    {"and then keep their shape", 720, 576, {16, 15}, 1, 360, 0, true, 360, 288, {16, 15}},
    {"never nothing", 2000, 4, {1, 1}, 1, 16, 0, false, 16, 2, {1, 1}},
    {"a source that does not know", 64, 48, {0, 1}, 1, 0, 0, false, 64, 48, {1, 1}},
    {"what is left", 720, 596, {16, 15}, 1, 0, 0, false, 540, 576, {16, 15}, kCut},
    {"a side follows it", 720, 596, {16, 15}, 1, 0, 288, false, 288, 288, {1, 1}, kCut},
    {"and pixels' shape too", 720, 596, {16, 15}, 1, 270, 576, true, 270, 576, {32, 15}, kCut},
};
// clang-format on

class FrameSizes : public testing::TestWithParam<SizeCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, FrameSizes, testing::ValuesIn(kSizeCases),
                         test_support::NameOfRow());

TEST_P(FrameSizes, FollowSourceMarginsAndRequest) {
    const SizeCase& c = GetParam();
    Session session;
    MediaFileInfo info = FilmInfo();
    info.video->width = c.source_width;
    info.video->height = c.source_height;
    info.video->pixel_aspect = c.source_aspect;
    session.engine.media["/home/film.avi"] = info;
    session.OpenFilm();
    session.Video().SetCroppingLeftMargin(c.crop.left);
    session.Video().SetCroppingRightMargin(c.crop.right);
    session.Video().SetCroppingTopMargin(c.crop.top);
    session.Video().SetCroppingBottomMargin(c.crop.bottom);
    session.Audience().SetVideoCodec(0, c.codec);
    session.Audience().SetVideoWidth(0, c.width);
    session.Audience().SetVideoHeight(0, c.height);
    session.profile.SetNonSquarePixelMode(0, c.non_square);
    const VideoPlan plan = *session.Plan().video;
    EXPECT_EQ(plan.crop, (Margins{c.crop.left + c.more.left, c.crop.right + c.more.right,
                                  c.crop.top + c.more.top, c.crop.bottom + c.more.bottom}));
    EXPECT_EQ(plan.width, c.out_width);
    EXPECT_EQ(plan.height, c.out_height);
    EXPECT_EQ(plan.pixel_aspect.numerator, c.out_aspect.numerator);
    EXPECT_EQ(plan.pixel_aspect.denominator, c.out_aspect.denominator);
}

TEST(PixelRatio, OfACommandIsTheSources) {
    FilmSession session;
    session.Video().SetPixelAspectRatioX(4);  // y alone stays 1
    session.profile.SetNonSquarePixelMode(0, true);
    const Ratio aspect = session.Plan().video->pixel_aspect;
    EXPECT_EQ(aspect.numerator, 4);
    EXPECT_EQ(aspect.denominator, 1);
}

struct NoticeCase {
    const char* why;
    int width, height;
    int typed_ratio;
    bool said;
};
const NoticeCase kNoticeCases[] = {
    // why                    asked size, typed ratio, said
    {"another shape", 320, 200, 0, true},      {"the source's shape", 320, 240, 0, false},
    {"a side that follows", 320, 0, 0, false}, {"the source's size", 0, 0, 0, false},
    {"asked for", 320, 200, 2, false},
};

class PixelNotices : public testing::TestWithParam<NoticeCase> {};
INSTANTIATE_TEST_SUITE_P(Rows, PixelNotices, testing::ValuesIn(kNoticeCases),
                         test_support::NameOfRow());

TEST_P(PixelNotices, TellOfPixelsThatTheAskedSizeMakesOtherThanSquare) {
    const NoticeCase& c = GetParam();
    FilmSession session;
    session.Audience().SetVideoWidth(0, c.width);
    session.Audience().SetVideoHeight(0, c.height);
    if (c.typed_ratio != 0) {
        session.Video().SetPixelAspectRatioX(c.typed_ratio);
        session.profile.SetNonSquarePixelMode(0, true);
    }
    const EncodePlan plan = session.Plan();
    ASSERT_EQ(!plan.notices.empty(), c.said);
    if (c.said) {
        EXPECT_THAT(plan.notices.front(), testing::HasSubstr("-v_height 0"));
    }
}

TEST(Notices, TellThatAFilmIsHdr) {
    Session session;
    session.engine.media["/home/film.avi"].video->hdr = "PQ";
    session.OpenFilm();
    EXPECT_THAT(session.Plan().notices, testing::ElementsAre(testing::HasSubstr("HDR (PQ)")));
}

}  // namespace
}  // namespace engine
