// Where the streams of files begin and end.
#include "unit/engine/prepare/plan_session.h"

namespace engine {
namespace {

using test_support::FilmInfo;

// Streams of one file end at different times; the file ends with the longer one.
TEST(InputPlans, EndMarkBetweenTheStreamsEndsIsGood) {
    Session session;
    session.engine.media["/home/film.avi"] = FilmInfo(9000, 10000);
    session.OpenFilm();
    session.Audio().SetMarkOut(9500);
    session.Video().SetMarkOut(9500);
    EXPECT_EQ(session.Plan().media_length, Ticks::FromMilliseconds(9500));
}

TEST(InputPlans, StillPictureLastsToItsEndMarkElseItsDuration) {
    struct Case {
        const char* why;
        int still_duration, mark_in, mark_out;  // 0 = not set
        int ends_at, length;
    };
    const Case cases[] = {
        {"ten seconds by default", 0, 0, 0, 10000, 10000},
        {"its duration", 3000, 0, 0, 3000, 3000},
        {"the end mark wins", 3000, 0, 60000, 60000, 60000},
        {"a start mark shortens it", 3000, 1000, 0, 3000, 2000},
        {"between marks", 0, 1000, 1500, 1500, 500},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        Session session;
        session.engine.media["/home/a.jpg"] = FilmInfo(0, 40);
        session.engine.media["/home/a.jpg"].video->still = true;
        session.OpenFilm("a.jpg");
        session.profile.SetContentType(platform::kContentVideo);
        if (c.still_duration != 0) session.Video().SetStillDuration(c.still_duration);
        session.Video().SetMarkIn(c.mark_in);
        session.Video().SetMarkOut(c.mark_out);
        const EncodePlan plan = session.Plan();
        EXPECT_TRUE(plan.video->input.still);
        EXPECT_EQ(plan.video->input.mark_out, Ticks::FromMilliseconds(c.ends_at));
        EXPECT_EQ(plan.media_length, Ticks::FromMilliseconds(c.length));
    }
}

}  // namespace
}  // namespace engine
