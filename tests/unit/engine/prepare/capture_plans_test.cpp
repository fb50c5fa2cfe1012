// What is recorded: found by its names, with the size and rate that it has.
#include "unit/engine/prepare/plan_session.h"

namespace engine {
namespace {

using platform::SourceType;
using test_support::ErrorNumber;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;

struct CaptureNameCase {
    const char* why;
    SourceType type;
    const char* input;
    const char* scheme;
    const char* choice;  // of the screen's part
    DeviceKind kind;
    const char* id;
    const char* name;
};

TEST(CapturePlans, CapturesAreFoundByEachOfTheirNames) {
    constexpr SourceType kAudio = SourceType::Audio;
    constexpr SourceType kVideo = SourceType::Video;
    // clang-format off
    const CaptureNameCase cases[] = {
        // why                 type    input                     scheme       choice             kind                     id             name
        {"the default sound",  kAudio, "Default_Audio_Device",   "device",    "",                DeviceKind::PulseSource, "mic.1",       "Microphone"},
        {"sound by name",      kAudio, "Microphone",             "device",    "",                DeviceKind::PulseSource, "mic.1",       "Microphone"},
        {"the screen",         kVideo, "screencap1",             "screencap", "",                DeviceKind::Screen,      "x11",         "the screen"},
        {"its other name",     kVideo, "ScreenCapture1",         "screencap", "",                DeviceKind::Screen,      "x11",         "the screen"},
        {"what is chosen",     kVideo, "screencap1",             "screencap", "monitor:1",       DeviceKind::Screen,      "x11",         "monitor 1"},
        {"a part by itself",   kVideo, "region:64x48+10+20",     "screencap", "monitor:1",       DeviceKind::Screen,      "x11",         "the region 64x48+10+20 of the screen"},
        {"a monitor's name",   kVideo, "Screen, monitor HDMI-1", "device",    "window:Other",    DeviceKind::Screen,      "x11:monitor:HDMI-1", "monitor HDMI-1"},
    };
    // clang-format on
    for (const CaptureNameCase& c : cases) {
        SCOPED_TRACE(c.why);
        Session session;
        session.engine.screen_choice = c.choice;
        session.group->AddSource(c.type)->SetInput(c.input, c.scheme);
        const bool audio = c.type == SourceType::Audio;
        session.profile.SetContentType(audio ? platform::kContentAudio : platform::kContentVideo);
        const EncodePlan plan = session.Plan();
        const InputPlan& input = audio ? plan.audio->input : plan.video->input;
        ASSERT_TRUE(input.capture);
        EXPECT_TRUE(plan.IsLive());
        EXPECT_EQ(input.capture->kind, c.kind);
        EXPECT_EQ(input.capture->id, c.id);
        EXPECT_EQ(input.capture->name, c.name);
        EXPECT_EQ(plan.media_length, Ticks{});
        if (!audio) {
            EXPECT_EQ(session.engine.areas.back(), input.capture->area);
        }
    }
}

TEST(CapturePlans, ThePointerIsLeftOutOfEveryKindOfScreen) {
    for (const char* const name : {"screencap1", "region:64x48+10+20", "Screen, monitor HDMI-1"}) {
        for (const bool shown : {true, false}) {
            Session session;
            session.engine.shows_pointer = shown;
            session.group->AddSource(SourceType::Video)
                ->SetInput(name, name[0] == 'S' ? "device" : "screencap");
            session.profile.SetContentType(platform::kContentVideo);
            EXPECT_EQ(session.Plan().video->input.capture->area.pointer, shown) << name;
        }
    }
}

TEST(CapturePlans, CapturesThatCannotBeHadAreRefusedAsInputs) {
    struct Case {
        const char* why;
        SourceType type;
        const char* input;
        const char* scheme;
        ScreenAccess access;
        std::uint32_t number;
        std::vector<std::string> words;
        const char* choice = "";
    };
    constexpr std::uint32_t kMissing = platform::kFileNotFound;
    constexpr ScreenAccess kX11 = ScreenAccess::X11;
    // clang-format off
    const Case cases[] = {
        {"no such device", SourceType::Audio, "Webcam", "device", kX11, kMissing, {"audio", "Webcam", "-devices"}},
        {"no display", SourceType::Video, "screencap1", "screencap", ScreenAccess::None, kMissing, {"no screen", "DISPLAY"}},
        {"a monitor that the desktop asks for", SourceType::Video, "screencap1", "screencap", ScreenAccess::Portal, platform::kInvalidArgument, {"monitor 1", "leave TESSIVO_SCREEN out"}, "monitor:1"},
        {"a window that it asks for", SourceType::Video, "window:Editor", "screencap", ScreenAccess::Portal, platform::kInvalidArgument, {"Editor", "leave"}},
        {"the screen's sound", SourceType::Audio, "screencap1", "screencap", kX11, platform::kInvalidArgument, {"no audio source"}},
        {"no part of the screen", SourceType::Video, "screencap2", "screencap", kX11, platform::kInvalidArgument, {"screencap2", "region:"}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        Session session;
        session.engine.screen_access = c.access;
        session.engine.screen_choice = c.choice;
        const auto source = session.group->AddSource(c.type);
        EXPECT_EQ(ErrorNumber([&] { source->SetInput(c.input, c.scheme); }, c.words), c.number);
        EXPECT_EQ(source->Input(), "");
    }
    Session silent;
    silent.engine.devices.clear();
    const auto default_device = [&] {
        silent.group->AddSource(SourceType::Audio)->SetInput("Default_Audio_Device", "device");
    };
    EXPECT_EQ(ErrorNumber(default_device, {"no sound device"}), kMissing);
}

TEST(CapturePlans, AScreenThatTheDesktopHandsOutIsPlannedBeforeItsSizeIsKnown) {
    struct Case {
        const char *input, *scheme, *choice, *name;
    };
    const Case cases[] = {
        {"screencap1", "screencap", "", "the screen"},
        {"screencap1", "screencap", "region:64x48+10+20", "the region 64x48+10+20 of the screen"},
        {"Screen", "device", "monitor:1", "the screen"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Session session;
        session.engine.screen_access = ScreenAccess::Portal;
        session.engine.screen_choice = c.choice;
        session.profile.SetContentType(platform::kContentVideo);
        session.group->AddSource(SourceType::Video)->SetInput(c.input, c.scheme);
        EXPECT_TRUE(session.engine.areas.empty()) << "there is no X server to ask";
        const EncodePlan plan = session.Plan();
        EXPECT_TRUE(plan.LacksScreen());
        EXPECT_EQ(plan.video->width, 0);
        EXPECT_EQ(plan.video->input.capture->id, "portal");
        EXPECT_EQ(plan.video->input.capture->name, c.name);
        EXPECT_EQ(session.Video().CaptureArea(), c.name);
    }
}

TEST(CapturePlans, TheScreensSoundIsSomebodysAndToldOf) {
    Session session;
    session.engine.devices.push_back(
        {DeviceKind::PulseSource, "hdmi.monitor", "Monitor of HDMI", false, true});
    session.engine.sound_choice = "both";
    session.group->AddSource(SourceType::Video)->SetInput("screencap1", "screencap");
    const auto audio = platform::AsAudio(session.group->AddSource(SourceType::Audio));
    audio->SetInput("Default_Audio_Device", "device");
    EXPECT_EQ(audio->CaptureDevice(), "Microphone and Monitor of HDMI");
    const EncodePlan plan = session.Plan();
    EXPECT_EQ(plan.audio->input.capture->id, "mic.1");
    EXPECT_EQ(plan.audio->input.capture->mixed_id, "hdmi.monitor");
    EXPECT_THAT(plan.notices, Contains(AllOf(HasSubstr("Microphone and Monitor of HDMI"),
                                             HasSubstr("TESSIVO_SOUND"))));
}

TEST(CapturePlans, AScreenHasItsSizeAndTheLowerOfBothRates) {
    struct Case {
        std::int32_t capture, ceiling, rate;
    };
    for (const Case& c : {Case{30'000, 100'000, 30'000}, Case{30'000, 5'000, 5'000}}) {
        Session session;
        session.profile.SetContentType(platform::kContentVideo);
        session.group->AddSource(SourceType::Video)->SetInput("screencap1", "screencap");
        session.Video().SetCaptureRate(c.capture);
        session.Audience().SetVideoFPS(0, c.ceiling);
        const EncodePlan plan = session.Plan();
        EXPECT_EQ(plan.video->expected_rate, c.rate);
        EXPECT_EQ(plan.video->input.capture->rate, c.rate);
        EXPECT_EQ(plan.video->rate_ceiling, c.ceiling);
        EXPECT_EQ(plan.video->width, 1366);
        EXPECT_EQ(plan.video->height, 769);
        EXPECT_EQ(session.Video().CaptureArea(), "the screen");
    }
}

TEST(CapturePlans, ACameraIsAskedForWhatIsEncoded) {
    struct Case {
        const char* why;
        std::int32_t width, height;  // of the profile
        std::int32_t margin;         // on the left
        std::int32_t capture_rate;
        CameraRequest request;
        std::int32_t coded_width, coded_height, rate, ceiling;
    };
    // clang-format off
    const Case cases[] = {
        // why                              size      margin rate    request               coded     rate    ceiling
        {"the profile's size",              320, 240, 0,  30'000, {320, 240, 30'000}, 320, 240, 29'970, 100'000},
        {"what is clipped comes on top",    320, 240, 16, 30'000, {336, 240, 30'000}, 320, 240, 29'970, 100'000},
        {"the other side follows",          320, 0,   0,  30'000, {320, 0, 30'000},   320, 240, 29'970, 100'000},
        {"the camera's size",               0,   0,   40, 30'000, {0, 0, 30'000},     600, 480, 29'970, 100'000},
        {"of too fast a camera not all",    320, 240, 0,  15'000, {320, 240, 15'000}, 320, 240, 15'000, 15'000},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        Session session;
        session.profile.SetContentType(platform::kContentVideo);
        session.group->AddSource(SourceType::Video)->SetInput("Webcam", "device");
        session.Video().SetCaptureRate(c.capture_rate);
        session.Video().SetCroppingLeftMargin(c.margin);
        session.Audience().SetVideoWidth(0, c.width);
        session.Audience().SetVideoHeight(0, c.height);
        const EncodePlan plan = session.Plan();
        EXPECT_EQ(session.engine.cameras, std::vector<std::string>{"/dev/video0"});
        EXPECT_EQ(session.engine.camera_requests, std::vector{c.request});
        ASSERT_TRUE(plan.video->input.capture);
        EXPECT_EQ(plan.video->input.capture->kind, DeviceKind::Camera);
        EXPECT_EQ(plan.video->input.capture->camera, session.engine.camera_format);
        EXPECT_EQ(plan.video->width, c.coded_width);
        EXPECT_EQ(plan.video->height, c.coded_height);
        EXPECT_EQ(plan.video->expected_rate, c.rate);
        EXPECT_EQ(plan.video->rate_ceiling, c.ceiling);
    }
}

}  // namespace
}  // namespace engine
