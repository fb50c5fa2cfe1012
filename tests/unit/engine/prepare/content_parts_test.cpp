#include "engine/prepare/content_parts.h"

#include "support/error_of.h"
#include "unit/engine/prepare/plan_session.h"

namespace engine {
namespace {

Ticks Ms(std::int64_t ms) { return Ticks::FromMilliseconds(ms); }

void UseVoice(Session& session) {
    session.Audience().SetAudioCodec(0, 3);
    session.Audience().SetAudioConfig(0, 1, 16000, 12000, 16);
}

platform::WMEncAudioSource& Audio(Session& session) {
    return *platform::AsAudio(session.group->Source(platform::SourceType::Audio, 0));
}

TEST(ContentParts, AreReadLineByLine) {
    const std::vector<ContentPart> parts = {{Ms(0), Ms(1000), ContentMode::Speech},
                                            {Ms(1000), Ms(61500), ContentMode::Mixed},
                                            {Ms(70000), Ms(2000000000), ContentMode::Automatic}};
    EXPECT_EQ(
        ReadContentParts("# talk\r\n0 1000 1\r\n\r\n  1000\t61500 2 \r\n70000 2000000000 0", ""),
        parts);
    EXPECT_TRUE(ReadContentParts("", "").empty());
}

TEST(ContentParts, WhatCannotBeReadIsRefusedWithItsLine) {
    const struct {
        const char* why;
        const char* text;
        const char* words;
    } cases[] = {
        {"a number short", "0 10 1\n5000 6000", "line 2: not three whole numbers"},
        {"a number more", "0 10 1 1", "line 1: not three whole numbers"},
        {"seconds with a point", "\n0 1.5 1", "line 2: not three whole numbers"},
        {"words", "from 0 to 5", "line 1: not three whole numbers"},
        {"past 32 bits", "0 4000000000 1", "line 1: not three whole numbers"},
        {"no such mode", "0 10 3", "line 1: the content mode 3"},
        {"before the start", "-5 10 1", "line 1"},
        {"nothing in between", "10 10 1", "line 1: the end 10"},
        {"two modes at a time", "0 10 1\n9 20 2", "line 2: 9 is inside"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(test_support::ErrorNumber([&] { ReadContentParts(c.text, "a.edl"); },
                                            {"a.edl", c.words}),
                  platform::kInvalidData)
            << c.why;
    }
}

TEST(ContentParts, CountFromTheStartMark) {
    FilmSession session;
    UseVoice(session);
    session.engine.files->AddFile("/home/a.edl", "0 3000 1\n3000 4000 2\n");
    session.Audio().SetMarkIn(2500);
    Audio(session).SetContentMode(2);
    Audio(session).SetContentEDL("a.edl");
    const VoiceContent content = session.Plan().audio->content;
    EXPECT_EQ(content.mode, ContentMode::Mixed);
    EXPECT_EQ(content.parts, (std::vector<ContentPart>{{Ms(-2500), Ms(500), ContentMode::Speech},
                                                       {Ms(500), Ms(1500), ContentMode::Mixed}}));
}

TEST(ContentParts, AreForTheVoiceCodecAlone) {
    FilmSession session;
    Audio(session).SetContentEDL("gone.edl");
    EXPECT_TRUE(session.Plan().audio->content.parts.empty());
    UseVoice(session);
    EXPECT_EQ(test_support::ErrorNumber([&] { session.Plan(); }), platform::kFileNotFound);
}

}  // namespace
}  // namespace engine
