// Sessions that contradict themselves, each refused with the words that a user needs.
#include "support/row_name.h"
#include "unit/engine/prepare/plan_session.h"

namespace engine {
namespace {

using platform::SourceType;
using platform::VbrMode;
using test_support::ErrorNumber;
using test_support::FilmInfo;

struct Contradiction {
    const char* why;
    std::uint32_t number;
    std::vector<std::string> words;
    std::function<void(Session&)> set_up;  // `OpenFilm` has been called unless `empty`
    bool empty = false;
};

constexpr std::uint32_t kInvalid = platform::kInvalidArgument;
constexpr std::uint32_t kUnbuilt = platform::kNotImplemented;
constexpr bool kEmpty = true;
// clang-format off
const Contradiction kContradictions[] = {
    // input
    {"no source", kInvalid, {"no input", "-input"}, [](Session&) {}, kEmpty},
    {"no group", kInvalid, {"no input"}, [](Session& s) { s.tree.groups.Remove("SG_1"); }},
    {"a source whose input failed", kInvalid, {"audio source has no input"},
     [](Session& s) {
         s.profile.SetContentType(platform::kContentAudio);
         const auto source = s.group->AddSource(SourceType::Audio);
         EXPECT_EQ(ErrorNumber([&] { source->SetInput("gone.avi"); }), platform::kFileNotFound);
     }, kEmpty},
    {"screen beside a file", kInvalid, {"film.avi (-input)", "the screen (-profile)"},
     [](Session& s) {
         s.group->AddSource(SourceType::Video)->SetInput("screencap1", "screencap");
     }},
    {"two audio sources", kInvalid, {"film.avi (-input)", "give one of them", "New session"},
     [](Session& s) {
         s.group->AddSource(SourceType::Audio)->SetInput("Default_Audio_Device", "device");
     }},
    {"a microphone beside a profile that brings the default device's sound", kInvalid,
     {"Microphone (-adevice)", "(-profile)", "-profile scrn10 -adevice 1 -a_setting 64_44_2"},
     [](Session& s) {
         s.group->AddSource(SourceType::Audio)->SetInput("Microphone", "device");
         s.group->AddSource(SourceType::Audio)->SetInput("Default_Audio_Device", "device");
     }, kEmpty},
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
    {"profile without audience", kInvalid, {"no profile"}, [](Session& s) { s.profile = Profile(); }},
    {"sound asked of a silent film", kInvalid, {"test", "audio"},
     [](Session& s) {
         s.engine.media["/home/silent.avi"] = FilmInfo(0, 10000);
         s.OpenFilm("silent.avi");
     }, kEmpty},
    {"no audio format", kInvalid, {"audio format", "-a_setting"}, [](Session& s) { s.profile = Profile(); s.profile.AddAudience(1); }},
    {"no video rate", kInvalid, {"video bit rate", "-v_bitrate"},
     [](Session& s) {
         s.profile = Profile();
         s.profile.AddAudience(1)->SetAudioConfig(0, 2, 44100, 64000, 16);
     }},
    {"codec changed after its format", kInvalid, {"Voice", "64 kbps", "12_16_1"}, [](Session& s) { s.Audience().SetAudioCodec(0, 3); }},
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
    {"packets", kInvalid, {"2000", "1400"}, [](Session& s) { s.profile.SetMinPacketSize(2000); s.profile.SetMaxPacketSize(1400); }},
    {"packets below the least", kInvalid, {"99", "-maxpacket", "100"}, [](Session& s) { s.profile.SetMaxPacketSize(99); }},
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
    {"a filter that there is none of", kUnbuilt, {"Optimization 195", "-v_preproc"}, [](Session& s) { s.Video().SetOptimization(0xC3); }},
    {"fields that the codec has not", kUnbuilt,
     {"Windows Media Video", "interlaced", "-v_preproc 1", "-v_codec MP41"},
     [](Session& s) { s.Video().SetOptimization(0x3004); }},
    {"fields by the profile alone", kUnbuilt, {"interlaced", "-v_codec MP41"}, [](Session& s) { s.profile.SetInterlaceMode(0, true); }},
    {"pixels with a palette", kInvalid, {"E436EB7A", "palette", "-pixelformat"}, [](Session& s) { s.Video().SetPixelFormat(kRgb8); }},
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
    {"push to no point", kInvalid, {"live1", "point", "-push"}, [](Session& s) { s.tree.broadcast.SetServerName("live1"); }},
    // output
    {"no output", kInvalid, {"no output", "-output"}, [](Session& s) { s.tree.file.SetLocalFileName(""); }},
    {"output is the input", kInvalid, {"output /home/film.avi", "input /home/film.avi"},
     [](Session& s) { s.tree.file.SetLocalFileName("/home/film.avi"); }},
    {"output links to the input", kInvalid, {"/home/out.wmv", "/home/film.avi"},
     [](Session& s) { s.engine.files->links["/home/out.wmv"] = "/home/film.avi"; }},
    {"output is a folder", kInvalid, {"/home", "folder"}, [](Session& s) { s.tree.file.SetLocalFileName("/home"); }},
    {"output's folder is missing", platform::kPathNotFound, {"/gone", "/gone/out.wmv"},
     [](Session& s) { s.tree.file.SetLocalFileName("/gone/out.wmv"); }},
    {"packets too large for a broadcast", kInvalid, {"65530", "-minpacket", "65527"},
     [](Session& s) {
         s.tree.broadcast.SetPortNumber(platform::BroadcastProtocol::Http, 8080);
         s.profile.SetMinPacketSize(65530);
     }},
    // marks
    {"end before start", kInvalid, {"end mark 5000", "start mark 5000"}, [](Session& s) { s.Audio().SetMarkIn(5000); s.Audio().SetMarkOut(5000); }},
    {"end past the end", platform::kEndMarkPastEnd, {"10001", "10000", "film.avi"}, [](Session& s) { s.Video().SetMarkOut(10001); }},
    {"start past the end", kInvalid, {"start mark 10000", "film.avi"}, [](Session& s) { s.Audio().SetMarkIn(10000); }},
    {"a wrong output comes before an end mark that is then cleared", kInvalid, {"no output"},
     [](Session& s) { s.Video().SetMarkOut(10001); s.tree.file.SetLocalFileName(""); }},
};
// clang-format on

class Contradictions : public testing::TestWithParam<Contradiction> {};
INSTANTIATE_TEST_SUITE_P(Rows, Contradictions, testing::ValuesIn(kContradictions),
                         test_support::NameOfRow());

TEST_P(Contradictions, AreRefusedNamingBothSides) {
    const Contradiction& c = GetParam();
    Session session;
    if (!c.empty) session.OpenFilm();
    c.set_up(session);
    EXPECT_EQ(ErrorNumber([&] { session.Plan(); }, c.words), c.number);
    EXPECT_TRUE(session.engine.runs.empty());
}

}  // namespace
}  // namespace engine
