#include "engine/object_model/profile.h"
#include "engine/prepare/plan_maker.h"
#include "unit/engine/object_model/fake_engine.h"

namespace engine {
namespace {

using platform::SourceType;
using platform::VbrMode;
using test_support::ErrorNumber;
using test_support::ErrorOf;
using test_support::FakeEngine;
using test_support::FilmInfo;

// A session of one film with sound, ready to be planned; cases change it.
struct Session {
    Session() {
        test_support::FillProfile(profile);
        group = tree.groups.Add("SG_1");
        tree.file.SetLocalFileName("out.wmv");
        tree.auto_stop = true;
    }
    void OpenFilm(const std::string& path = "film.avi") { group->AutoSetFileSource(path); }
    platform::WMEncSource& Audio() { return *group->Source(SourceType::Audio, 0); }
    platform::WMEncVideoSource& Video() {
        return *platform::AsVideo(group->Source(SourceType::Video, 0));
    }
    platform::WMEncAudience& Audience() {
        audience = profile.Audience(0);
        return *audience;
    }
    EncodePlan Plan() {
        if (attach) group->SetProfile(profile);
        return MakePlan(tree.Record(), {*engine.files, engine.Parts().camera_format});
    }

    FakeEngine engine;
    SessionTree tree{std::make_shared<const EngineParts>(engine.Parts())};
    Profile profile;
    std::shared_ptr<platform::WMEncSourceGroup> group;
    std::shared_ptr<platform::WMEncAudience> audience;
    bool attach = true;
};

constexpr std::uint32_t kRgb8 = 0xE436EB7A;

struct Contradiction {
    const char* why;
    std::uint32_t number;
    std::vector<const char*> words;
    std::function<void(Session&)> set_up;  // `OpenFilm` has been called unless `empty`
    bool empty = false;
};

TEST(Plan, RefusesEachContradictionNamingBothSides) {
    constexpr std::uint32_t kInvalid = platform::kInvalidArgument;
    constexpr std::uint32_t kUnbuilt = platform::kNotImplemented;
    constexpr bool kEmpty = true;
    // clang-format off
    const Contradiction cases[] = {
        // input
        {"no source", kInvalid, {"no input", "-input"}, [](Session&) {}, kEmpty},
        {"no group", kInvalid, {"no input"}, [](Session& s) { s.tree.groups.Remove("SG_1"); }},
        {"a source whose input failed", kInvalid, {"audio source has no input"},
         [](Session& s) {
             s.profile.SetContentType(platform::kContentAudio);
             const auto source = s.group->AddSource(SourceType::Audio);
             EXPECT_EQ(ErrorNumber([&] { source->SetInput("gone.avi"); }), platform::kFileNotFound);
         }, kEmpty},
        {"screen beside a file", kInvalid, {"film.avi", "screencap1"},
         [](Session& s) {
             s.group->AddSource(SourceType::Video)->SetInput("screencap1", "screencap");
         }},
        {"two audio sources", kInvalid, {"film.avi", "Default_Audio_Device"},
         [](Session& s) {
             s.group->AddSource(SourceType::Audio)->SetInput("Default_Audio_Device", "device");
         }},
        {"two groups", kInvalid, {"SG_1", "SG_2"}, [](Session& s) { s.tree.groups.Add("SG_2"); }},
        {"a file's sound with the screen", kUnbuilt, {"sound.wav", "the screen", "together"},
         [](Session& s) {
             s.engine.media["/home/sound.wav"] = FilmInfo(10000, 0);
             s.OpenFilm("sound.wav");
             s.group->AddSource(SourceType::Video)->SetInput("screencap1", "screencap");
         }, kEmpty},
        {"a capture read twice", kInvalid, {"the screen", "two passes", "-v_mode"},
         [](Session& s) {
             s.profile.SetContentType(platform::kContentVideo);
             s.group->AddSource(SourceType::Video)->SetInput("screencap1", "screencap");
             s.Video().SetPreProcessPass(1);
         }, kEmpty},
        // profile
        {"no profile", kInvalid, {"SG_1", "no profile"}, [](Session& s) { s.attach = false; }},
        {"profile without audience", kInvalid, {"no profile"},
         [](Session& s) { s.profile = Profile(); }},
        {"sound asked of a silent film", kInvalid, {"test", "audio"},
         [](Session& s) {
             s.engine.media["/home/silent.avi"] = FilmInfo(0, 10000);
             s.OpenFilm("silent.avi");
         }, kEmpty},
        {"no audio format", kInvalid, {"audio format", "-a_setting"},
         [](Session& s) { s.profile = Profile(); s.profile.AddAudience(1); }},
        {"no video rate", kInvalid, {"video bit rate", "-v_bitrate"},
         [](Session& s) {
             s.profile = Profile();
             s.profile.AddAudience(1)->SetAudioConfig(0, 2, 44100, 64000, 16);
         }},
        {"codec changed after its format", kInvalid, {"Voice", "64 kbps", "12_16_1"},
         [](Session& s) { s.Audience().SetAudioCodec(0, 3); }},
        {"a format that the codec has not", kInvalid, {"128 kbps", "24 bits", "128_44_2"},
         [](Session& s) { s.Audience().SetAudioConfig(0, 2, 44100, 128'000, 24); }},
        {"mode changed after the format", kInvalid, {"quality", "Q75_44_2"},
         [](Session& s) { s.profile.SetVBRMode(SourceType::Audio, 0, VbrMode::Quality); }},
        {"uncompressed has no quality", kInvalid, {"Full frames", "quality"},
         [](Session& s) {
             s.Audience().SetVideoCodec(0, 5);
             s.profile.SetVBRMode(SourceType::Video, 0, VbrMode::Quality);
         }},
        {"video peak below the average", kInvalid, {"200000", "300000", "-v_peakbitrate"},
         [](Session& s) {
             s.profile.SetVBRMode(SourceType::Video, 0, VbrMode::Peak);
             s.Audience().SetVideoPeakBitrate(0, 200'000);
         }},
        {"audio peak below the average", kInvalid, {"48000", "64000", "-a_peakbitrate"},
         [](Session& s) {
             s.profile.SetVBRMode(SourceType::Audio, 0, VbrMode::Peak);
             s.Audience().SetAudioConfig(0, 2, 44100, 64000, 16);
             s.Audience().SetAudioPeakBitrate(0, 48'000);
         }},
        {"margins that leave no column", kInvalid,
         {"left and right", "320 and 320", "640", "-v_clip"},
         [](Session& s) {
             s.Video().SetCroppingLeftMargin(320);
             s.Video().SetCroppingRightMargin(320);
         }},
        {"a margin beyond the last row", kInvalid, {"top and bottom", "0 and 16000", "480"},
         [](Session& s) { s.Video().SetCroppingBottomMargin(16000); }},
        {"a downmix level that lowers nothing", kInvalid,
         {"CenterMix", "145", "0 to 144", "-a_folddown6to2"},
         [](Session& s) {
             s.engine.media["/home/film.avi"].audio->channels = 6;
             s.OpenFilm();
             s.tree.attributes.Add("CenterMix", -145);
         }, kEmpty},
        {"packets", kInvalid, {"2000", "1400"},
         [](Session& s) { s.profile.SetMinPacketSize(2000); s.profile.SetMaxPacketSize(1400); }},
        {"packets below the least", kInvalid, {"99", "-maxpacket", "100"},
         [](Session& s) { s.profile.SetMaxPacketSize(99); }},
        {"no audio peak", kInvalid, {"AudioPeakBitrate", "cannot be 0"},
         [](Session& s) {
             s.profile.SetVBRMode(SourceType::Audio, 0, VbrMode::Peak);
             s.Audience().SetAudioConfig(0, 2, 44100, 64000, 16);
             s.Audience().SetAudioPeakBitrate(0, 0);
         }},
        {"too long a buffer", kInvalid, {"VideoBufferMax", "600001"},
         [](Session& s) {
             s.profile.SetVBRMode(SourceType::Video, 0, VbrMode::Peak);
             s.Audience().SetVideoBufferMax(0, 600'001);
         }},
        // what is not there yet
        {"a filter that there is none of", kUnbuilt, {"Optimization 195", "-v_preproc"},
         [](Session& s) { s.Video().SetOptimization(0xC3); }},
        {"fields that the codec has not", kUnbuilt,
         {"Windows Media Video", "interlaced", "-v_preproc 1", "-v_codec MP41"},
         [](Session& s) { s.Video().SetOptimization(0x3004); }},
        {"fields by the profile alone", kUnbuilt, {"interlaced", "-v_codec MP41"},
         [](Session& s) { s.profile.SetInterlaceMode(0, true); }},
        {"pixels with a palette", kInvalid, {"E436EB7A", "palette", "-pixelformat"},
         [](Session& s) { s.Video().SetPixelFormat(kRgb8); }},
        {"pixels that would be read as others", kInvalid, {"Full frames", "RGB565", "RGB555"},
         [](Session& s) {
             s.Audience().SetVideoCodec(0, 5);
             s.Video().SetPixelFormat(0xE436EB7B);
         }},
        {"a width that parts two pixels of a colour", kInvalid,
         {"YUY2", "639 x 480", "multiple of 2"},
         [](Session& s) {
             s.Audience().SetVideoCodec(0, 5);
             s.Video().SetPixelFormat(platform::FourCC("YUY2"));
             s.Video().SetCroppingLeftMargin(1);
         }},
        {"optimization definition", kUnbuilt, {"a.edl"},
         [](Session& s) {
             platform::AsAudio(s.group->Source(SourceType::Audio, 0))->SetContentEDL("a.edl");
         }},
        {"broadcast", kUnbuilt, {"8080", "-broadcast"},
         [](Session& s) {
             s.tree.broadcast.SetPortNumber(platform::BroadcastProtocol::Http, 8080);
         }},
        {"push", kUnbuilt, {"live1", "-push"},
         [](Session& s) { s.tree.broadcast.SetServerName("live1"); }},
        // output
        {"no output", kInvalid, {"no output", "-output"},
         [](Session& s) { s.tree.file.SetLocalFileName(""); }},
        {"output is the input", kInvalid, {"output /home/film.avi", "input /home/film.avi"},
         [](Session& s) { s.tree.file.SetLocalFileName("/home/film.avi"); }},
        {"output links to the input", kInvalid, {"/home/out.wmv", "/home/film.avi"},
         [](Session& s) { s.engine.files->links["/home/out.wmv"] = "/home/film.avi"; }},
        {"output is a folder", kInvalid, {"/home", "folder"},
         [](Session& s) { s.tree.file.SetLocalFileName("/home"); }},
        {"output's folder is missing", platform::kPathNotFound, {"/gone", "/gone/out.wmv"},
         [](Session& s) { s.tree.file.SetLocalFileName("/gone/out.wmv"); }},
        // marks
        {"end before start", kInvalid, {"end mark 5000", "start mark 5000"},
         [](Session& s) { s.Audio().SetMarkIn(5000); s.Audio().SetMarkOut(5000); }},
        {"end past the end", platform::kEndMarkPastEnd, {"10001", "10000", "film.avi"},
         [](Session& s) { s.Video().SetMarkOut(10001); }},
        {"start past the end", kInvalid, {"start mark 10000", "film.avi"},
         [](Session& s) { s.Audio().SetMarkIn(10000); }},
        {"a wrong output comes before an end mark that is then cleared", kInvalid, {"no output"},
         [](Session& s) { s.Video().SetMarkOut(10001); s.tree.file.SetLocalFileName(""); }},
    };
    // clang-format on
    for (const Contradiction& c : cases) {
        SCOPED_TRACE(c.why);
        Session session;
        if (!c.empty) session.OpenFilm();
        c.set_up(session);
        const platform::Error error = ErrorOf([&] { session.Plan(); });
        EXPECT_EQ(error.unsigned_number(), c.number) << error.description();
        for (const char* word : c.words) EXPECT_THAT(error.description(), testing::HasSubstr(word));
        EXPECT_TRUE(session.engine.runs.empty());
    }
}

TEST(Plan, TakesOverWhatTheTreeSays) {
    Session session;
    session.OpenFilm();
    session.Audio().SetMarkIn(1000);
    session.Video().SetMarkIn(1000);
    session.Video().SetMarkOut(4000);
    session.Video().SetOptimization(3);
    session.Video().SetPreProcessPass(1);
    session.profile.SetMaxPacketSize(1400);
    session.tree.video_performance = 80;
    session.tree.display.SetTitle("T");
    session.tree.attributes.Add("CenterMix", -3);
    session.tree.attributes.Add("CenterMix", -4);
    const EncodePlan plan = session.Plan();

    ASSERT_TRUE(plan.audio && plan.video);
    EXPECT_EQ(plan.passes, 2);
    EXPECT_EQ(plan.media_length, Ticks::FromMilliseconds(9000)) << "the longer stream";
    EXPECT_EQ(plan.FilePath(), "/home/out.wmv");
    EXPECT_EQ(plan.content.title, "T");
    ASSERT_EQ(plan.attributes.size(), 1U) << "an attribute that is set again is not written twice";
    EXPECT_EQ(plan.attributes[0].second, platform::AttributeValue(-4));
    EXPECT_EQ(plan.max_packet_bytes, 1400U);

    EXPECT_EQ(plan.audio->input.path, "/home/film.avi");
    EXPECT_EQ(plan.audio->input.mark_out, Ticks{});
    EXPECT_EQ(plan.audio->format, (AudioFormat{64040, 44100, 2, 16}));
    EXPECT_EQ(plan.audio->codec_name, "Windows Media Audio 9");
    EXPECT_EQ(plan.audio->codec_description, "64 kbps, 44 kHz, stereo CBR");
    EXPECT_EQ(plan.video->input.mark_out, Ticks::FromMilliseconds(4000));
    EXPECT_EQ(plan.video->codec_description, "300 kbps CBR");
    EXPECT_EQ(plan.video->expected_rate, 29970) << "the source's, below the ceiling";
    EXPECT_EQ(plan.video->rate_ceiling, 100'000);
    EXPECT_EQ(plan.video->performance, 80);
    EXPECT_TRUE(plan.video->remove_telecine);
}

// A session that is set up again starts from the codec and the mode that the last one left.
TEST(Plan, AudioIsJudgedByTheLastCodecAndMode) {
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
        Session session;
        session.OpenFilm();
        c.set_up(session);
        EXPECT_EQ(session.Plan().audio->format, c.format);
    }
}

TEST(Plan, OnlyStreamsOfTheContentKindLive) {
    Session session;
    session.OpenFilm();
    session.Video().SetPixelFormat(kRgb8);  // would be refused
    session.Video().SetPreProcessPass(1);
    session.profile.SetContentType(platform::kContentAudio);
    const EncodePlan plan = session.Plan();
    EXPECT_TRUE(plan.audio);
    EXPECT_FALSE(plan.video);
    EXPECT_EQ(plan.passes, 1) << "a resting source asks for no pass";
}

TEST(Plan, VariableRatesWithoutPreprocessingRunOnePass) {
    for (const VbrMode mode : {VbrMode::Peak, VbrMode::BitRate}) {
        Session session;
        session.OpenFilm();
        session.profile.SetVBRMode(SourceType::Video, 0, mode);
        const EncodePlan plan = session.Plan();
        EXPECT_EQ(plan.passes, 1);
        EXPECT_EQ(plan.video->peak_rate_bps, mode == VbrMode::Peak ? 450'000 : 0)
            << "a peak that is not given is half as much again";
    }
}

// Streams of one file end at different times; the file ends with the longer one.
TEST(Plan, EndMarkBetweenTheStreamsEndsIsGood) {
    Session session;
    session.engine.media["/home/film.avi"] = FilmInfo(9000, 10000);
    session.OpenFilm();
    session.Audio().SetMarkOut(9500);
    session.Video().SetMarkOut(9500);
    EXPECT_EQ(session.Plan().media_length, Ticks::FromMilliseconds(9500));
}

TEST(Plan, StillPictureLastsToItsEndMarkElseItsDuration) {
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

TEST(Plan, FrameSize) {
    struct Case {
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
    const Case cases[] = {
        // why, source, its pixels, codec, asked, non-square, coded, its pixels, cut off, and more
        {"the source's", 640, 480, {1, 1}, 1, 0, 0, false, 640, 480, {1, 1}},
        {"odd width where it must be even", 641, 481, {1, 1}, 1, 0, 0, false, 640, 481, {1, 1}, {},
         {0, 1, 0, 0}},
        {"odd sides where they must be even", 641, 481, {1, 1}, 2, 0, 0, false, 640, 480, {1, 1}, {},
         {0, 1, 0, 1}},
        {"an odd size that was asked for", 640, 480, {1, 1}, 2, 321, 201, false, 320, 200, {1, 1}},
        {"odd size elsewhere", 641, 481, {1, 1}, 4, 0, 0, false, 641, 481, {1, 1}},
        {"asked", 640, 480, {1, 1}, 1, 320, 200, false, 320, 200, {1, 1}},
        {"height follows", 640, 480, {1, 1}, 1, 320, 0, false, 320, 240, {1, 1}},
        {"width follows", 640, 360, {1, 1}, 1, 0, 180, false, 320, 180, {1, 1}},
        {"pixels keep their shape", 720, 576, {16, 15}, 1, 0, 0, false, 720, 576, {16, 15}},
        {"the shown shape counts", 720, 576, {16, 15}, 1, 0, 288, false, 384, 288, {1, 1}},
        {"asked sizes are square", 720, 576, {16, 15}, 1, 384, 288, false, 384, 288, {1, 1}},
        {"unless they need not be", 720, 576, {16, 15}, 1, 360, 576, true, 360, 576, {32, 15}},
        {"and then keep their shape", 720, 576, {16, 15}, 1, 360, 0, true, 360, 288, {16, 15}},
        {"never nothing", 2000, 4, {1, 1}, 1, 16, 0, false, 16, 2, {1, 1}},
        {"a source that does not know", 64, 48, {0, 1}, 1, 0, 0, false, 64, 48, {1, 1}},
        {"what is left", 720, 596, {16, 15}, 1, 0, 0, false, 540, 576, {16, 15}, kCut},
        {"a side follows it", 720, 596, {16, 15}, 1, 0, 288, false, 288, 288, {1, 1}, kCut},
        {"and pixels' shape too", 720, 596, {16, 15}, 1, 270, 576, true, 270, 576, {32, 15}, kCut},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
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
}

TEST(Plan, DeviceConformance) {
    struct Case {
        const char* why;
        const char* target;
        int codec;
        int width, height, fps, kilobits;
        VbrMode mode;
        std::vector<const char*> words;  // of the refusal, or the level that is chosen
        std::uint32_t refused = 0;
    };
    constexpr std::uint32_t kInvalid = platform::kInvalidArgument;
    constexpr VbrMode kConstant = VbrMode::Constant;
    // clang-format off
    const Case cases[] = {
        // why                                target   codec size     fps kbps   mode
        {"the smallest level that holds it",  "SP",    2, 176, 144, 15,    96, kConstant, {"SP@LL"}},
        {"by its rate",                       "SP",    2, 176, 144, 15,   200, kConstant, {"SP@ML"}},
        {"by its size",                       "MP",    2, 640, 480, 15,   200, kConstant, {"MP@ML"}},
        {"small frames may be more",        "MP",    2, 176, 144, 29,   200, kConstant, {"MP@LL"}},
        {"a level by name",                   "MP@HL", 2, 176, 144, 15,    96, kConstant, {"MP@HL"}},
        {"a quality may take all",            "SP",    2, 176, 144, 15,    96, VbrMode::Quality, {"SP@ML"}},
        {"too large",                         "SP",    2, 640, 480, 15,   200, kConstant,
         {"640x480", "352x288", "-v_width"}, kInvalid},
        {"too fast",                          "SP",    2, 352, 288, 25,   200, kConstant,
         {"25", "352x288 at 15", "-v_framerate"}, kInvalid},
        {"too many bits",                     "SP",    2, 352, 288, 15,   500, kConstant,
         {"500000", "384000", "-v_bitrate"}, kInvalid},
        {"too many at the peak",              "MP@LL", 2, 320, 240, 15,  1500, VbrMode::Peak,
         {"2250000", "2000000", "-v_peakbitrate"}, kInvalid},
        {"no such profile",                   "XP",    2, 320, 240, 15,   200, kConstant,
         {"XP", "SP or MP"}, kInvalid},
        {"interlaced profiles",               "CP",    2, 320, 240, 15,   200, kConstant,
         {"CP", "-v_profile MP"}, platform::kNotImplemented},
        {"another codec",                     "SP",    1, 176, 144, 15,    96, kConstant,
         {"Windows Media Video 8", "-v_codec WMV9"}, kInvalid},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        Session session;
        session.OpenFilm();
        session.profile.SetVBRMode(SourceType::Video, 0, c.mode);
        platform::WMEncAudience& audience = session.Audience();
        audience.SetVideoCodec(0, c.codec);
        audience.SetVideoWidth(0, c.width);
        audience.SetVideoHeight(0, c.height);
        audience.SetVideoFPS(0, c.fps * 1000);
        audience.SetVideoBitrate(0, c.kilobits * 1000);
        audience.SetProperty(SourceType::Video, 0, "DeviceConformanceTarget",
                             std::string(c.target));
        if (c.refused == 0) {
            const VideoPlan plan = *session.Plan().video;
            EXPECT_EQ(plan.conformance, c.words.front());
            EXPECT_EQ(plan.simple_profile, c.target[0] == 'S');
            EXPECT_GE(plan.level_rate_bps, c.kilobits * 1000);
            EXPECT_GT(plan.level_buffer_bits, 0);
            continue;
        }
        const platform::Error error = ErrorOf([&] { session.Plan(); });
        EXPECT_EQ(error.unsigned_number(), c.refused);
        for (const char* word : c.words) EXPECT_THAT(error.description(), testing::HasSubstr(word));
    }
}

TEST(Plan, OptimizationNamesTheFilter) {
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
        Session session;
        session.OpenFilm();
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

TEST(Plan, FieldsAreCodedWhereTheCodecHasThem) {
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
        Session session;
        session.OpenFilm();
        session.Audience().SetVideoCodec(0, 4);
        session.Video().SetOptimization(c.optimization);
        session.profile.SetInterlaceMode(0, c.interlaced);
        EXPECT_EQ(session.Plan().video->fields, c.fields);
    }
}

TEST(Plan, AttributesDriveTheDownmixOfSixChannels) {
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

TEST(Plan, TypedPixelRatioIsTheSources) {
    Session session;
    session.OpenFilm();
    session.Video().SetPixelAspectRatioX(4);  // y alone stays 1
    session.profile.SetNonSquarePixelMode(0, true);
    const Ratio aspect = session.Plan().video->pixel_aspect;
    EXPECT_EQ(aspect.numerator, 4);
    EXPECT_EQ(aspect.denominator, 1);
}

TEST(Plan, ExpectedRateIsTheLower) {
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

TEST(Plan, CapturesAreFoundByEachOfTheirNames) {
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

TEST(Plan, CapturesThatCannotBeHadAreRefusedAsInputs) {
    struct Case {
        const char* why;
        SourceType type;
        const char* input;
        const char* scheme;
        ScreenAccess access;
        std::uint32_t number;
        std::vector<const char*> words;
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
        const platform::Error error = ErrorOf([&] { source->SetInput(c.input, c.scheme); });
        EXPECT_EQ(error.unsigned_number(), c.number);
        for (const char* word : c.words)
            EXPECT_NE(error.description().find(word), std::string::npos) << error.description();
        EXPECT_EQ(source->Input(), "");
    }
    Session silent;
    silent.engine.devices.clear();
    const platform::Error error = ErrorOf([&] {
        silent.group->AddSource(SourceType::Audio)->SetInput("Default_Audio_Device", "device");
    });
    EXPECT_NE(error.description().find("no sound device"), std::string::npos);
}

TEST(Plan, AScreenThatTheDesktopHandsOutIsPlannedBeforeItsSizeIsKnown) {
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

TEST(Plan, AScreenHasItsSizeAndTheLowerOfBothRates) {
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

TEST(Plan, ACameraIsAskedForWhatIsEncoded) {
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
