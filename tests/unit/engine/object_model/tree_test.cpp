#include "engine/object_model/encoder.h"
#include "engine/object_model/profile.h"
#include "unit/engine/object_model/fake_engine.h"

namespace engine {
namespace {

using platform::FourCC;
using platform::SourceType;
using platform::VbrMode;
using test_support::ErrorNumber;
using test_support::ErrorOf;

TEST(Profile, IndexesNameTheSameCodecInEveryMode) {
    const std::uint32_t audio[] = {0x0161, 0x0162, 0x0163, 0x000A, 0};
    const std::uint32_t video[] = {FourCC("WMV1"), FourCC("WMV2"), FourCC("WMV3"),
                                   FourCC("MSS2"), FourCC("MP4S"), 0};
    const std::map<VbrMode, std::pair<int, int>> counts = {{VbrMode::Constant, {5, 6}},
                                                           {VbrMode::Peak, {2, 5}},
                                                           {VbrMode::Quality, {3, 5}},
                                                           {VbrMode::BitRate, {2, 5}}};
    Profile profile;
    for (const auto& [mode, count] : counts) {
        profile.SetVBRMode(SourceType::Audio, 0, mode);
        profile.SetVBRMode(SourceType::Video, 0, mode);
        EXPECT_EQ(std::pair(profile.AudioCodecCount(), profile.VideoCodecCount()), count);
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(profile.GetCodecFourCCFromIndex(SourceType::Audio, i), audio[i]);
            EXPECT_EQ(profile.GetCodecIndexFromFourCC(SourceType::Audio, audio[i]), i);
            EXPECT_FALSE(profile.EnumAudioCodec(i).empty());
        }
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(profile.GetCodecFourCCFromIndex(SourceType::Video, i), video[i]);
            EXPECT_EQ(profile.GetCodecIndexFromFourCC(SourceType::Video, video[i]), i);
        }
    }
    const platform::Error error =
        ErrorOf([&] { profile.GetCodecIndexFromFourCC(SourceType::Video, FourCC("XYZ1")); });
    EXPECT_EQ(error.unsigned_number(), platform::kInvalidArgument);
}

TEST(Profile, AGroupKeepsItsOwnCopy) {
    test_support::FakeEngine fake;
    SourceGroup group("SG_1", std::make_shared<const EngineParts>(fake.Parts()));
    Profile profile;
    test_support::FillProfile(profile);
    EXPECT_EQ(group.Profile(), nullptr);
    group.SetProfile(profile);
    profile.SetMinPacketSize(500);
    profile.Audience(0)->SetVideoBitrate(0, 1);
    group.Profile()->SetMaxPacketSize(1400);

    EXPECT_EQ(profile.MaxPacketSize(), 0);
    EXPECT_EQ(group.Profile()->MaxPacketSize(), 1400);
    EXPECT_EQ(group.Profile()->MinPacketSize(), 0);
    EXPECT_EQ(group.Profile()->Audience(0)->VideoBitrate(0), 300'000);

    Profile other;
    other.LoadFromIWMProfile(*group.Profile());
    EXPECT_EQ(other.MaxPacketSize(), 1400);
    EXPECT_EQ(other.Audience(0)->AudioBitrate(0), 64040);
    other.Audience(0)->SetVideoBitrate(0, 2);
    EXPECT_EQ(group.Profile()->Audience(0)->VideoBitrate(0), 300'000);
}

// A session holds its audience while the profile takes over another, and drops the profile first.
TEST(Profile, AudiencesFollowTheirProfileAndOutliveIt) {
    auto profile = std::make_unique<Profile>();
    const auto first = profile->AddAudience(1000);
    const auto second = profile->AddAudience(1000);
    Profile loaded;
    test_support::FillProfile(loaded);
    profile->LoadFromIWMProfile(loaded);
    EXPECT_EQ(first->VideoBitrate(0), 300'000);
    EXPECT_EQ(ErrorNumber([&] { second->VideoBitrate(0); }), platform::kInvalidArgument);
    profile.reset();
    EXPECT_EQ(first->VideoBitrate(0), 300'000);
}

TEST(Tree, EachPropertyRefusesValuesOutsideItsRangeByName) {
    test_support::FakeEngine fake;
    test_support::FakeEventLoop loop;
    Encoder encoder(loop, fake.Parts());
    Profile profile;
    const auto audience = profile.AddAudience(1);
    const auto group = encoder.SourceGroupCollection().Add("SG_1");
    const auto audio = platform::AsAudio(group->AddSource(SourceType::Audio));
    const auto video = platform::AsVideo(group->AddSource(SourceType::Video));
    constexpr auto kHttp = platform::BroadcastProtocol::Http;
    struct Case {
        const char* name;
        std::function<void(std::int32_t)> set;
        std::vector<std::int32_t> good, bad;
    };
    // clang-format off
    const Case cases[] = {
        {"AudioCodec", [&](auto v) { audience->SetAudioCodec(0, v); }, {0, 4}, {-1, 5}},
        {"VideoCodec", [&](auto v) { audience->SetVideoCodec(0, v); }, {0, 5}, {-1, 6}},
        {"VideoBitrate", [&](auto v) { audience->SetVideoBitrate(0, v); }, {1}, {0, -1}},
        {"VideoWidth", [&](auto v) { audience->SetVideoWidth(0, v); }, {0, 1920}, {-1, 16385}},
        {"VideoHeight", [&](auto v) { audience->SetVideoHeight(0, v); }, {0, 1080}, {-1, 16385}},
        {"VideoFPS", [&](auto v) { audience->SetVideoFPS(0, v); }, {1, 100000}, {0, 1000001}},
        {"VideoKeyFrameDistance", [&](auto v) { audience->SetVideoKeyFrameDistance(0, v); }, {0, 10000}, {-1}},
        {"VideoBufferSize", [&](auto v) { audience->SetVideoBufferSize(0, v); }, {1, 5000}, {0}},
        {"VideoImageSharpness", [&](auto v) { audience->SetVideoImageSharpness(0, v); }, {0, 100}, {-1, 101}},
        {"VideoCompressionQuality", [&](auto v) { audience->SetVideoCompressionQuality(0, v); }, {0, 100}, {-1, 101}},
        {"ContentType", [&](auto v) { profile.SetContentType(v); }, {0, 1, 16, 17}, {2, 18}},
        {"VBRMode", [&](auto v) { profile.SetVBRMode(SourceType::Audio, 0, static_cast<VbrMode>(v)); }, {1, 4}, {0, 5}},
        {"MinPacketSize", [&](auto v) { profile.SetMinPacketSize(v); }, {0, 65536}, {-1, 65537}},
        {"MaxPacketSize", [&](auto v) { profile.SetMaxPacketSize(v); }, {0, 65536}, {-1, 65537}},
        {"MarkIn", [&](auto v) { audio->SetMarkIn(v); }, {0, 5000}, {-1}},
        {"MarkOut", [&](auto v) { video->SetMarkOut(v); }, {0, 5000}, {-1}},
        {"PreProcessPass", [&](auto v) { video->SetPreProcessPass(v); }, {0, 1}, {-1, 2}},
        {"ContentMode", [&](auto v) { audio->SetContentMode(v); }, {0, 2}, {-1, 3}},
        {"Optimization", [&](auto v) { video->SetOptimization(v); }, {0, 0x3004}, {-1}},
        {"PixelAspectRatioX", [&](auto v) { video->SetPixelAspectRatioX(v); }, {1}, {0, -1}},
        {"PixelAspectRatioY", [&](auto v) { video->SetPixelAspectRatioY(v); }, {1}, {0, -1}},
        {"CroppingLeftMargin", [&](auto v) { video->SetCroppingLeftMargin(v); }, {0, 8}, {-1}},
        {"CroppingBottomMargin", [&](auto v) { video->SetCroppingBottomMargin(v); }, {0, 8}, {-1}},
        {"StillDuration", [&](auto v) { video->SetStillDuration(v); }, {1, 10000}, {0}},
        {"PortNumber", [&](auto v) { encoder.Broadcast().SetPortNumber(kHttp, v); }, {0, 65535}, {-1, 65536}},
        {"VideoPerformance", [&](auto v) { encoder.SetVideoPerformance(v); }, {0, 100}, {-1, 101}},
    };
    // clang-format on
    for (const Case& c : cases) {
        for (const std::int32_t value : c.good)
            EXPECT_EQ(ErrorOf([&] { c.set(value); }).number(), 0) << c.name << " " << value;
        for (const std::int32_t value : c.bad) {
            const platform::Error error = ErrorOf([&] { c.set(value); });
            EXPECT_EQ(error.unsigned_number(), platform::kInvalidArgument)
                << c.name << " " << value;
            EXPECT_THAT(error.description(), testing::HasSubstr(c.name));
            EXPECT_THAT(error.description(), testing::HasSubstr(std::to_string(value)));
        }
    }
}

TEST(Sources, TakeTheStreamsThatTheFileHas) {
    test_support::FakeEngine fake;
    fake.media["/home/song.mp3"] = test_support::FilmInfo(8000, 0);
    fake.media["/home/a.jpg"] = test_support::FilmInfo(0, 40);
    fake.media["/home/a.jpg"].video->still = true;
    SourceGroup group("SG_1", std::make_shared<const EngineParts>(fake.Parts()));

    group.AutoSetFileSource("film.avi");
    EXPECT_EQ(fake.probes, 1) << "both sources share what was read";
    EXPECT_EQ(group.SourceCount(SourceType::Audio), 1);
    ASSERT_EQ(group.SourceCount(SourceType::Video), 1);
    EXPECT_EQ(group.Source(SourceType::Video, 0)->Duration(), 10000);
    EXPECT_EQ(group.Source(SourceType::Video, 0)->Input(), "film.avi");

    // The sources of a loaded session keep their settings when they get another file.
    group.Source(SourceType::Audio, 0)->SetMarkIn(500);
    group.AutoSetFileSource("song.mp3");
    ASSERT_EQ(group.SourceCount(SourceType::Audio), 1);
    EXPECT_EQ(group.SourceCount(SourceType::Video), 0);
    EXPECT_EQ(group.Source(SourceType::Audio, 0)->Input(), "song.mp3");
    EXPECT_EQ(group.Source(SourceType::Audio, 0)->MarkIn(), 500);

    const auto video = platform::AsVideo(group.AddSource(SourceType::Video));
    const platform::Error no_picture = ErrorOf([&] { video->SetInput("song.mp3"); });
    EXPECT_EQ(no_picture.unsigned_number(), platform::kInvalidData);
    EXPECT_THAT(no_picture.description(), testing::HasSubstr("/home/song.mp3 has no picture"));
    EXPECT_EQ(video->Input(), "");
    EXPECT_EQ(ErrorNumber([&] { group.AutoSetFileSource("gone.avi"); }), platform::kFileNotFound);

    video->SetInput("screencap1", "screencap");
    EXPECT_EQ(video->Scheme(), "screencap");
    EXPECT_EQ(video->Duration(), 0);
    EXPECT_EQ(ErrorNumber([&] { video->SetInput("x", "tape"); }), platform::kInvalidArgument);
    video->SetInput("a.jpg");
    EXPECT_EQ(video->Duration(), 10000) << "a still picture lasts its StillDuration";
    video->SetStillDuration(2000);
    EXPECT_EQ(video->Duration(), 2000);
}

}  // namespace
}  // namespace engine
