// Profile files as other programs may write them, and what is written back.
#include "engine/files/profile_file.h"

#include <fmt/format.h>

#include "engine/plan/audio_stream_format.h"
#include "support/error_of.h"

namespace engine::files {
namespace {

using platform::SourceType;
using platform::VbrMode;
using testing::ElementsAre;
using testing::HasSubstr;

/// A text with `from` exchanged for `to`, once.
std::string With(std::string text, const std::string& from, const std::string& to) {
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

const std::string kAudio =
    R"(<streamconfig majortype="{73647561-0000-0010-8000-00AA00389B71}" streamnumber="1" streamname="Ton" )"
    R"(bitrate="48000" bufferwindow="1500"><wmmediatype subtype="{00000161-0000-0010-8000-00AA00389B71}" )"
    R"(lsamplesize="1115"><waveformatex wFormatTag="353" nChannels="2" nSamplesPerSec="32000" )"
    R"(nAvgBytesPerSec="6000" nBlockAlign="1115" wBitsPerSample="16" codecdata="0000 0000"/>)"
    R"(</wmmediatype></streamconfig>)";
const std::string kVideo =
    R"(<streamconfig majortype="{73646976-0000-0010-8000-00AA00389B71}" streamnumber="2" )"
    R"(bitrate="302000" bufferwindow="5000" decodercomplexity="AU" vbrenabled="0" vbrquality="0" )"
    R"(bitratemax="0" bufferwindowmax="0"><videomediaprops maxkeyframespacing="80000000" quality="60"/>)"
    R"(<wmmediatype subtype="{33564D57-0000-0010-8000-00AA00389B71}"><videoinfoheader )"
    R"(dwbitrate="302000" avgtimeperframe="333667"><rctarget left="0" top="0" right="320" bottom="240"/>)"
    R"(<bitmapinfoheader biwidth="320" biheight="240" bicompression="WMV3"/></videoinfoheader>)"
    R"(</wmmediatype></streamconfig>)";
const std::string kBoth = R"(<profile version="589824" name="N">)" + kAudio + kVideo + "</profile>";

struct ForeignProfile {
    const char* why;
    std::string from, to;  // exchanged in a profile of both streams
    std::function<bool(const ProfileRecord&)> expected;
    std::vector<std::string> notes = {};
};

const AudioSettings& Audio(const ProfileRecord& p) { return p.audiences[0].audio; }
const VideoSettings& Video(const ProfileRecord& p) { return p.audiences[0].video; }

// clang-format off
const ForeignProfile kForeign[] = {
    {"as it stands", "N", "N", [](auto& p) {
         return p.name == "N" && Audio(p).format == AudioFormat{48000, 32000, 2, 16} && Video(p).frame_rate == 29970 &&
                Video(p).key_frame_distance_ms == 8000 && Video(p).sharpness == 60 && Video(p).width == 320 &&
                p.audio_mode == VbrMode::Constant && p.audiences[0].properties.empty(); }},
    {"names in another case", "<bitmapinfoheader biwidth", "<BitMapInfoHeader BIWIDTH", [](auto& p) { return Video(p).width == 320; }},
    {"a prefix", "<videomediaprops", "<w:videomediaprops xmlns:w=\"u\"", [](auto& p) { return Video(p).sharpness == 60; }},
    {"no major type", "majortype=\"{73647561-0000-0010-8000-00AA00389B71}\"", "", [](auto& p) { return p.audiences[0].streams == 17; }},
    // rate control
    {"quality", "vbrenabled=\"0\" vbrquality=\"0\"", "vbrenabled=\"1\" vbrquality=\"97\"",
     [](auto& p) { return p.video_mode == VbrMode::Quality && Video(p).quality == 97 && Video(p).sharpness == 75; }},
    {"an average alone", "vbrenabled=\"0\"", "vbrenabled=\"1\"", [](auto& p) { return p.video_mode == VbrMode::BitRate; }},
    {"a peak", "vbrenabled=\"0\" vbrquality=\"0\" bitratemax=\"0\" bufferwindowmax=\"0\"",
     "vbrenabled=\"1\" bitratemax=\"0x100000\" bufferwindowmax=\"4000\"",
     [](auto& p) { return p.video_mode == VbrMode::Peak && Video(p).peak_rate_bps == 1048576 && Video(p).peak_buffer_ms == 4000; }},
    {"a peak wins over a quality", "vbrenabled=\"0\" vbrquality=\"0\" bitratemax=\"0\"",
     "vbrenabled=\"1\" vbrquality=\"50\" bitratemax=\"900000\"", [](auto& p) { return p.video_mode == VbrMode::Peak; }},
    {"not enabled", "vbrquality=\"0\"", "vbrquality=\"50\"", [](auto& p) { return p.video_mode == VbrMode::Constant; }},
    {"an audio quality in the wave format", "nAvgBytesPerSec=\"6000\"", "nAvgBytesPerSec=\"2147483490\"",
     [](auto& p) { return p.audio_mode == VbrMode::Quality && Audio(p).format.value == 98; }},
    // what may be missing
    {"no rate", "bitrate=\"302000\"", "", [](auto& p) { return Video(p).bit_rate_bps == 302000; }},
    {"no audio rate", "bitrate=\"48000\"", "", [](auto& p) { return Audio(p).format.value == 48000; }},
    {"no audio depth", "wBitsPerSample=\"16\"", "", [](auto& p) { return Audio(p).format.bits_per_sample == 16; }},
    {"a buffer that the writer chooses", "bufferwindow=\"5000\"", "bufferwindow=\"-1\"", [](auto& p) { return Video(p).buffer_ms == 5000; }},
    {"the same as 32 bits", "bufferwindow=\"5000\"", "bufferwindow=\"4294967295\"", [](auto& p) { return Video(p).buffer_ms == 5000; }},
    {"no video properties", "<videomediaprops maxkeyframespacing=\"80000000\" quality=\"60\"/>", "",
     [](auto& p) { return Video(p).key_frame_distance_ms == 10000 && Video(p).sharpness == 75; }},
    {"the source's frame rate", "avgtimeperframe=\"333667\"", "", [](auto& p) { return Video(p).frame_rate == 1000000; }},
    {"the size of the target", "biwidth=\"320\" biheight=\"240\"", "", [](auto& p) { return Video(p).width == 320 && Video(p).height == 240; }},
    {"rows from the top down", "biheight=\"240\"", "biheight=\"-240\"", [](auto& p) { return Video(p).height == 240; }},
    // codecs
    {"the format block has the last word", "bicompression=\"WMV3\"", "bicompression=\"wmv2\"", [](auto& p) { return Video(p).codec == 1; }},
    {"the subtype where it says nothing", "bicompression=\"WMV3\"", "", [](auto& p) { return Video(p).codec == 2; }},
    {"uncompressed", "bicompression=\"WMV3\"", "bicompression=\"0\"", [](auto& p) { return Video(p).codec == 5; }},
    {"uncompressed with a layout", "bicompression=\"WMV3\"", "bicompression=\"YUY2\"", [](auto& p) { return Video(p).codec == 5; }},
    {"PCM", "wFormatTag=\"353\"", "wFormatTag=\"1\"", [](auto& p) { return Audio(p).codec == 4; }},
    {"the audio subtype", "wFormatTag=\"353\"", "", [](auto& p) { return Audio(p).codec == 0; }},
    {"a conformance", "decodercomplexity=\"AU\"", "decodercomplexity=\"mp\"",
     [](auto& p) { return p.audiences[0].properties.at({SourceType::Video, "DeviceConformanceTarget"}) == platform::PropertyValue("MP"); }},
    {"of a codec that has none", "decodercomplexity=\"AU\" vbrenabled=\"0\" vbrquality=\"0\" bitratemax=\"0\" bufferwindowmax=\"0\"><videomediaprops maxkeyframespacing=\"80000000\" quality=\"60\"/><wmmediatype subtype=\"{33564D57-0000-0010-8000-00AA00389B71}\"><videoinfoheader dwbitrate=\"302000\" avgtimeperframe=\"333667\"><rctarget left=\"0\" top=\"0\" right=\"320\" bottom=\"240\"/><bitmapinfoheader biwidth=\"320\" biheight=\"240\" bicompression=\"WMV3\"",
     "decodercomplexity=\"MP\"><wmmediatype><videoinfoheader dwbitrate=\"1\"><bitmapinfoheader biwidth=\"8\" bicompression=\"MSS2\"",
     [](auto& p) { return p.audiences[0].properties.empty() && Video(p).codec == 3; }},
    // what is out of range is held to it
    {"too wide", "biwidth=\"320\"", "biwidth=\"99999\"", [](auto& p) { return Video(p).width == 16384; },
     {"stream 2: VideoWidth cannot be 99999, 16384 is taken."}},
    {"less than nothing", "bitrate=\"302000\"", "bitrate=\"-5\"", [](auto& p) { return Video(p).bit_rate_bps == 1; },
     {"stream 2: VideoBitrate cannot be -5, 1 is taken."}},
    {"past every number", "quality=\"60\"", "quality=\"99999999999999999999\"", [](auto& p) { return Video(p).sharpness == 100; },
     {"stream 2: VideoImageSharpness cannot be 1152921504606846976, 100 is taken."}},
    {"no frame lasts as long", "avgtimeperframe=\"333667\"", "avgtimeperframe=\"99999999999\"", [](auto& p) { return Video(p).frame_rate == 1; },
     {"stream 2: VideoFPS cannot be 0, 1 is taken."}},
    // one stream of a kind
    {"no audio stream", kAudio, "", [](auto& p) { return p.audiences[0].streams == platform::kContentVideo; }},
    {"no video stream", kVideo, "", [](auto& p) { return p.audiences[0].streams == platform::kContentAudio; }},
    {"a second rate and a script", kVideo, kVideo + With(With(kVideo, "302000", "99000"), "streamnumber=\"2\"", "streamnumber=\"3\"") +
         "<streamconfig majortype=\"{73636D64-0000-0010-8000-00AA00389B71}\" streamnumber=\"4\"/>",
     [](auto& p) { return Video(p).bit_rate_bps == 302000; },
     {"Of the profile \"N\" these are left out: stream 3 (video), stream 4 (script)."}},
};
// clang-format on

TEST(ProfileFile, OthersProfilesAreUnderstood) {
    for (const ForeignProfile& row : kForeign) {
        SCOPED_TRACE(row.why);
        const ProfileFile file = ReadProfile(With(kBoth, row.from, row.to));
        EXPECT_TRUE(row.expected(file.profile));
        EXPECT_EQ(file.notes, row.notes);
    }
}

TEST(ProfileFile, WhatCannotBeUsedIsRefusedWithItsName) {
    const struct {
        const char* why;
        std::string from, to;
        std::uint32_t number;
        std::vector<std::string> words;
    } kCases[] = {
        {"another document", "<profile version=\"589824\"", "<other", platform::kInvalidData, {}},
        {"no stream", kAudio + kVideo, "", platform::kInvalidData, {"neither"}},
        {"no number",
         "bitrate=\"302000\"",
         "bitrate=\"much\"",
         platform::kInvalidData,
         {"stream 2", "bitrate=\"much\""}},
        {"no format",
         "<videoinfoheader",
         "<somethingelse></somethingelse><audioinfoheader",
         platform::kInvalidData,
         {"line 1"}},
        {"no wave format",
         "waveformatex",
         "mpegformat",
         platform::kInvalidData,
         {"stream 1", "waveformatex", "{00000161"}},
        {"no sampling rate",
         "nSamplesPerSec=\"32000\"",
         "",
         platform::kInvalidData,
         {"nSamplesPerSec"}},
        {"a video codec of others",
         "bicompression=\"WMV3\"",
         "bicompression=\"WVC1\"",
         platform::kNotImplemented,
         {"stream 2", "WVC1", "WMV9"}},
        {"an audio codec of others",
         "wFormatTag=\"353\"",
         "wFormatTag=\"85\"",
         platform::kNotImplemented,
         {"stream 1", "0x55", "WMA9STD"}},
        {"no codec at all",
         "wFormatTag=\"353\"",
         "wFormatTag=\"-1\"",
         platform::kNotImplemented,
         {"stream 1"}},
        {"letters that are none",
         "bicompression=\"WMV3\"",
         "bicompression=\"\x01\x02\"",
         platform::kNotImplemented,
         {"0x20200201"}},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(test_support::ErrorNumber([&] { ReadProfile(With(kBoth, row.from, row.to)); },
                                            row.words),
                  row.number);
    }
}

TEST(ProfileFile, WhatIsUnknownIsWrittenBackInItsPlace) {
    const std::string script =
        "<streamconfig majortype=\"{73636D64-0000-0010-8000-00AA00389B71}\" streamnumber=\"9\"/>";
    std::string text = With(kBoth, "name=\"N\"", "name=\"N\" description=\"D &lt; E\" Mine=\"1\"");
    text = With(text, "<streamconfig", script + "<!-- kept --><streamconfig");
    text = With(text, "<videomediaprops", "<unknown a=\"b\">t<c/></unknown><videomediaprops");
    ProfileRecord profile = ReadProfile(text).profile;
    profile.content_type = platform::kContentAudioVideo;
    profile.name = "Other";
    profile.audiences[0].video.bit_rate_bps = 400000;
    const std::string written = WriteProfile(profile);
    for (const char* part :
         {"name=\"Other\" description=\"D &lt; E\" Mine=\"1\"", "streamnumber=\"9\"",
          "<!-- kept -->", "<unknown a=\"b\">", "streamname=\"Ton\"", "bufferwindow=\"1500\"",
          "nBlockAlign=\"1115\"", "codecdata=\"0000 0000\"", "bitrate=\"400000\"",
          "avgtimeperframe=\"333667\""})
        EXPECT_THAT(written, HasSubstr(part));
    EXPECT_LT(written.find("streamnumber=\"9\""), written.find("streamnumber=\"1\""));
    EXPECT_THAT(written, testing::Not(HasSubstr("x-")));

    // Another format has other data.
    profile.audiences[0].audio.codec = 4;
    profile.audiences[0].audio.format = {1411200, 44100, 2, 16};
    const std::string changed = WriteProfile(profile);
    for (const char* part :
         {"wFormatTag=\"1\"", "{00000001-", "nBlockAlign=\"4\"", "codecdata=\"\""})
        EXPECT_THAT(changed, HasSubstr(part));
}

TEST(ProfileFile, WhatIsNotChangedOfAVideoFormatIsLeft) {
    const std::vector<std::pair<std::string, std::string>> format = {
        {"dwbitrate=\"302000\"", "dwbitrate=\"300000\" dwbiterrorrate=\"9\""},
        {"<rctarget left=\"0\" top=\"0\" right=\"320\" bottom=\"240\"/>",
         "<rcsource left=\"8\" top=\"4\" right=\"328\" bottom=\"244\"/>"
         "<rctarget left=\"2\" top=\"2\" right=\"322\" bottom=\"242\"/>"},
        {"biheight=\"240\"",
         "biheight=\"-240\" biplanes=\"2\" bibitcount=\"16\" bisizeimage=\"7\""},
        {"80000000", "80000001"},
    };
    std::string text = kBoth;
    for (const auto& [from, to] : format) text = With(text, from, to);
    ProfileRecord profile = ReadProfile(text).profile;
    std::string written = WriteProfile(profile);
    for (const char* part :
         {"dwbitrate=\"300000\" dwbiterrorrate=\"9\"", "<rcsource left=\"8\" top=\"4\"",
          "<rctarget left=\"2\" top=\"2\" right=\"322\"", "biheight=\"-240\"", "biplanes=\"2\"",
          "bibitcount=\"16\" bisizeimage=\"7\"", "avgtimeperframe=\"333667\"", "80000001"})
        EXPECT_THAT(written, HasSubstr(part));

    VideoSettings& video = profile.audiences[0].video;
    video.height = 200;
    video.bit_rate_bps = 99000;
    written = WriteProfile(profile);
    for (const char* part : {"dwbitrate=\"99000\"", "biheight=\"-200\"", "bibitcount=\"16\"",
                             "<rcsource left=\"0\" top=\"0\" right=\"320\" bottom=\"200\""})
        EXPECT_THAT(written, HasSubstr(part));

    video.codec = 5;  // uncompressed
    written = WriteProfile(profile);
    for (const char* part : {"biheight=\"200\"", "biplanes=\"1\" bibitcount=\"24\"",
                             "bicompression=\"0\"", "lsamplesize=\"192000\""})
        EXPECT_THAT(written, HasSubstr(part));
    profile.file_text = std::make_shared<const std::string>(written);
    video.width = 318;  // rows are padded
    EXPECT_THAT(WriteProfile(profile), HasSubstr("lsamplesize=\"191200\""));
}

TEST(ProfileFile, AnAttributeThatStandsTwiceDoesNotComeBack) {
    const std::string twice = "x-peakbuffer=\"0\" vbrenabled=\"0\" X-PeakBuffer=\"7\"";
    ProfileRecord profile = ReadProfile(With(kBoth, "vbrenabled=\"0\"", twice)).profile;
    EXPECT_EQ(Video(profile).peak_buffer_ms, 0);
    profile.content_type = platform::kContentAudioVideo;
    EXPECT_EQ(Video(ReadProfile(WriteProfile(profile)).profile).peak_buffer_ms, 0);
}

TEST(ProfileFile, AStreamIsDescribedAsItWillBeWritten) {
    const struct {
        const char* why;
        std::int32_t codec;
        VbrMode mode;
        AudioFormat format;
        std::string extra_begins;
    } kCases[] = {
        {"a constant rate", 0, VbrMode::Constant, {64040, 44100, 2, 16}, "00200000"},
        {"a quality", 0, VbrMode::Quality, {50, 44100, 2, 16}, "00180000"},
        {"lossless", 2, VbrMode::Quality, {100, 44100, 2, 16}, "1000"},
        {"a format that the codec does not have", 0, VbrMode::Constant, {64040, 1, 2, 16}, ""},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.why);
        ProfileRecord profile;
        profile.audio_mode = row.mode;
        AudienceRecord& audience = profile.audiences.emplace_back();
        audience.streams = platform::kContentAudio;
        audience.audio.codec = row.codec;
        audience.audio.format = row.format;
        const WrittenAudio written = WrittenFor(
            platform::kAudioCodecs[static_cast<std::size_t>(row.codec)], row.mode, row.format);
        const std::int32_t block =
            row.extra_begins.empty() ? 0 : StreamFormatOf(written, row.mode).block_align;
        const std::string text = WriteProfile(profile);
        EXPECT_THAT(text, HasSubstr(fmt::format("nBlockAlign=\"{}\"", block)));
        EXPECT_THAT(text, HasSubstr(fmt::format("lsamplesize=\"{}\"", block)));
        EXPECT_THAT(text, HasSubstr("codecdata=\"" + row.extra_begins));
    }
}

TEST(ProfileFile, AStreamThatTheFileLacksIsAdded) {
    ProfileRecord profile = ReadProfile(With(kBoth, kAudio, "")).profile;
    profile.content_type = platform::kContentAudioVideo;
    profile.audiences[0].streams = platform::kContentAudioVideo;
    profile.audiences[0].audio.format = {64040, 44100, 2, 16};
    const ProfileFile again = ReadProfile(WriteProfile(profile));
    EXPECT_EQ(again.profile.audiences[0].audio.format, profile.audiences[0].audio.format);
    EXPECT_THAT(*again.profile.file_text, HasSubstr("streamnumber=\"3\""));
    EXPECT_THAT(again.notes, ElementsAre());
}

}  // namespace
}  // namespace engine::files
