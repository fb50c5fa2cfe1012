// The format of what is heard, and how many channels become two.
#include "unit/engine/prepare/plan_session.h"

namespace engine {
namespace {

using platform::SourceType;
using platform::VbrMode;

// A session that is set up again starts from the codec and the mode that the last one left.
TEST(AudioPlan, IsJudgedByTheLastCodecAndMode) {
    const struct {
        const char* why;
        std::function<void(Session&)> set_up;
        AudioFormat format;
    } cases[] = {
        {"format before its codec",
         [](Session& s) {
             s.Audience().SetAudioConfig(0, 2, 44100, 128'000, 24);
             s.Audience().SetAudioCodec(0, 1);
         },
         {128'000, 44100, 2, 24}},
        {"rate before a quality, in a quality mode of before",
         [](Session& s) {
             s.profile.SetVBRMode(SourceType::Audio, 0, VbrMode::Quality);
             s.Audience().SetAudioConfig(0, 2, 32000, 48'000, 16);
             s.Audience().SetAudioConfig(0, 2, 44100, 75, 16);
         },
         {75, 44100, 2, 16}},
        {"rate before its mode",
         [](Session& s) {
             s.profile.SetVBRMode(SourceType::Audio, 0, VbrMode::Quality);
             s.Audience().SetAudioConfig(0, 2, 44100, 64'000, 16);
             s.profile.SetVBRMode(SourceType::Audio, 0, VbrMode::Constant);
         },
         {64'040, 44100, 2, 16}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        FilmSession session;
        c.set_up(session);
        EXPECT_EQ(session.Plan().audio->format, c.format);
    }
}

TEST(AudioPlan, AttributesDriveTheDownmixOfSixChannels) {
    struct Case {
        const char* why;
        int channels;
        std::vector<std::pair<const char*, std::int32_t>> attributes;
        Downmix levels;
    };
    const Case cases[] = {
        {"none: the usual", 6, {}, {3, 3, 144}},
        {"all", 6, {{"SurroundMix", -10}, {"CenterMix", -4}, {"LFEMix", -144}}, {10, 4, 144}},
        {"the others keep theirs", 6, {{"LFEMix", 0}}, {3, 3, 0}},
        {"nothing to fold, nothing to refuse", 2, {{"CenterMix", -200}}, {3, 3, 144}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        Session session;
        session.engine.media["/home/film.avi"].audio->channels = c.channels;
        session.OpenFilm();
        for (const auto& [name, value] : c.attributes) session.tree.attributes.Add(name, value);
        EXPECT_EQ(session.Plan().audio->downmix, c.levels);
    }
}

}  // namespace
}  // namespace engine
