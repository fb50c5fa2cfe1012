// Session files as this program and others may write them, and what is written back.
#include "engine/files/session_file.h"

#include "engine/files/file_text.h"
#include "support/error_of.h"
#include "support/fake_files.h"

namespace engine::files {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string With(std::string text, const std::string& from, const std::string& to) {
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

const std::string kProfile =
    "<profile name='P'><streamconfig streamnumber='1' bitrate='302000' secret='s'><wmmediatype>"
    "<videoinfoheader><bitmapinfoheader bicompression='WMV3'/></videoinfoheader></wmmediatype>"
    "</streamconfig></profile>";
const std::string kSession =
    "<?xml version='1.0'?><EncoderSession major_version='9' minor_version='0' Name='Lecture'>"
    "<Description>Camera</Description><SourceGroups><SourceGroup Name='SG_1'>"
    "<Source Type='audio' Scheme='Device' Input='Default_Audio_Device'/>"
    "<Source Type='video' Scheme='ScreenCap' Input='ScreenCapture1' Optimization='1' "
    "CroppingLeft='4'>"
    "<Property Name='Region' Value='10,20,810,620'/></Source>"
    "<Profile Name='P'><![CDATA[\n" +
    kProfile +
    "\n]]></Profile></SourceGroup></SourceGroups>"
    "<Output><File LocalFileName='lecture.wmv'/><Broadcast Protocol='http' Port='8080'/>"
    "<Push ServerName='media.example' PublishingPoint='live' Template='base'/></Output>"
    "<DisplayInfo><Title>Lecture 3</Title><Rating>G</Rating></DisplayInfo>"
    "<Attributes><Attribute Name='SurroundMix' Type='dword' Value='-10'/>"
    "<Attribute Name='Room' Type='string' Value='A &amp; B'/></Attributes>"
    "<Options AutoStop='1' Performance='80'/></EncoderSession>";

struct Files {
    Files() {
        files.AddFolder("/home/shows");
        files.AddFile("/home/shows/own.prx", EncodeText(kProfile));
    }
    SessionFile Read(const std::string& text) { return ReadSession(text, folder); }
    std::string Written(const SessionFile& file) {
        return WriteSession(file.session, folder, file.text.get());
    }

    test_support::FakeFileSystem files;
    SessionFolder folder{files, "/home/shows/job.wme"};
};

const VideoSourceRecord& Video(const SessionRecord& s) { return s.groups[0].video.at(0); }
const AudioSourceRecord& Audio(const SessionRecord& s) { return s.groups[0].audio.at(0); }
std::string ProfileName(const SessionRecord& s) { return s.groups[0].profile->name; }
bool HasProfile(const SessionRecord& s) {
    return ProfileName(s) == "P" && s.groups[0].profile->audiences.size() == 1;
}

const std::string kScreen = "<Source Type='video' Scheme='ScreenCap' Input='ScreenCapture1'";

struct ForeignSession {
    const char* why;
    std::string from, to;
    std::function<bool(const SessionRecord&)> expected;
    std::vector<std::string> notes = {};
};

// clang-format off
const ForeignSession kForeign[] = {
    {"as it stands", "Lecture 3", "Lecture 3", [](auto& s) {
         return Audio(s).input.scheme == "device" && Video(s).input.input == "ScreenCapture1" && Video(s).input.area == "region:800x600+10+20" &&
                Video(s).optimization == 1 && Video(s).left_margin == 4 && HasProfile(s) && s.output == "/home/shows/lecture.wmv" &&
                s.broadcast.http_port == 8080 && s.broadcast.server == "media.example" && s.broadcast.template_name == "base" &&
                s.content.title == "Lecture 3" && s.content.rating == "G" && s.attributes.size() == 2 && s.auto_stop && s.video_performance == 80; }},
    {"a kind by the element's name", "<Source Type='audio' Scheme='Device' Input='Default_Audio_Device'/>", "<AudioSource Resource='Device://Default_Audio_Device'/>",
     [](auto& s) { return Audio(s).input.scheme == "device" && Audio(s).input.input == "Default_Audio_Device"; }},
    {"a file without scheme", kScreen, "<Source Type='2' Input='clip.avi'", [](auto& s) { return Video(s).input.input == "/home/shows/clip.avi" && Video(s).input.scheme.empty(); }},
    {"a file with one", kScreen, "<Source Type='2' Input='FILE://sub/clip.avi'", [](auto& s) { return Video(s).input.input == "/home/shows/sub/clip.avi"; }},
    {"marks and passes", kScreen, kScreen + " MarkIn='500' markout='0x5DC' PreProcessPass='1'",
     [](auto& s) { return Video(s).mark_in_ms == 500 && Video(s).mark_out_ms == 1500 && Video(s).pre_process_pass == 1; }},
    {"a margin's whole name", "CroppingLeft='4'", "CroppingLeftMargin='6'", [](auto& s) { return Video(s).left_margin == 6; }},
    {"a pixel format by name", "CroppingLeft='4'", "PixelFormat='yuy2'", [](auto& s) { return Video(s).pixel_format == platform::FourCC("YUY2"); }},
    {"an aspect of nothing is none", "CroppingLeft='4'", "PixelAspectRatioX='0'", [](auto& s) { return Video(s).pixel_aspect_x == 0; }},
    {"capture rate", "<Property Name='Region'", "<Property Name='CaptureRate' Value='15000'/><Property Name='Region'", [](auto& s) { return Video(s).capture_rate == 15000; }},
    {"another part of the screen", "Name='Region' Value='10,20,810,620'", "Name='Area' Value='monitor:1'", [](auto& s) { return Video(s).input.area == "monitor:1"; }},
    {"the profile as elements", "<![CDATA[\n" + kProfile + "\n]]>", kProfile, [](auto& s) { return HasProfile(s); }},
    {"the profile with its characters escaped", "<![CDATA[\n" + kProfile + "\n]]>",
     "&lt;profile name='P'>&lt;streamconfig>&lt;wmmediatype>&lt;videoinfoheader>&lt;bitmapinfoheader bicompression='WMV3'/>&lt;/videoinfoheader>"
     "&lt;/wmmediatype>&lt;/streamconfig>&lt;/profile>", [](auto& s) { return HasProfile(s); }},
    {"the profile in a file", "<Profile Name='P'><![CDATA[\n" + kProfile + "\n]]>", "<Profile File='own.prx'>", [](auto& s) { return HasProfile(s); }},
    {"the profile by its name", "<![CDATA[\n" + kProfile + "\n]]>", "", [](auto& s) { return ProfileName(s) == "P" && s.groups[0].profile->audiences.empty(); }},
    {"another word for the output", "LocalFileName", "FileName", [](auto& s) { return s.output == "/home/shows/lecture.wmv"; }},
    {"another word for the port", "Port='8080'", "HttpPort='81'", [](auto& s) { return s.broadcast.http_port == 81; }},
    {"display information as attributes", "<DisplayInfo><Title>Lecture 3</Title>", "<DisplayInformation title='T'/><DisplayInfo>", [](auto& s) { return s.content.title == "T"; }},
    {"display information in elements of its own", "<Title>Lecture 3</Title><Rating>G</Rating>", "<Texts><Title Value='T'/><More rating='R'/></Texts>",
     [](auto& s) { return s.content.title == "T" && s.content.rating == "R"; }, {"2 parts of the session were not understood; they are kept."}},
    {"a server that is for something else", "<Output>", "<License><Server>keys.example</Server></License><Output>", [](auto& s) { return s.broadcast.server == "media.example"; },
     {"1 parts of the session were not understood; they are kept."}},
    {"a server with a point is for pushing", "<Push ServerName='media.example'", "<Remote Server='other.example'", [](auto& s) { return s.broadcast.server == "other.example"; },
     {"1 parts of the session were not understood; they are kept."}},
    {"what is done in any case", "<File LocalFileName='lecture.wmv'/>", "<File LocalFileName='lecture.wmv' MaxSize='0' MaxDuration='-1' AutoIndex='1'><Repeat>0</Repeat></File>",
     [](auto& s) { return s.output == "/home/shows/lecture.wmv"; }},
    {"what is not done", "<File LocalFileName='lecture.wmv'/>", "<File LocalFileName='lecture.wmv' MaxSize='9' MaxDuration='9' AutoIndex='0' AutoRemove='1' Protocol='mms' AutoArchive='stop'><Repeat Value='1'/></File>",
     [](auto& s) { return s.output == "/home/shows/lecture.wmv"; }, {"7 parts of the session were not understood; they are kept."}},
    {"kinds of attributes", "<Attributes>", "<Attributes><Qword Name='q' Value='7'/><Attribute Name='b' Type='bool' Value='true'/><Attribute Name='r' Type='bytes' Value='00'/>",
     [](auto& s) { return s.attributes.size() == 4 && s.attributes[0].second == platform::AttributeValue(7) && s.attributes[1].second == platform::AttributeValue(1); },
     {"2 parts of the session were not understood; they are kept."}},
    {"unknown parts", "<Options", "<Plugin a='1' b='2'><Data>x</Data></Plugin><Options Speed='1'", [](auto& s) { return s.auto_stop; },
     {"5 parts of the session were not understood; they are kept."}},
    {"a source of another kind", "<Profile", "<Source Type='script' Input='UserScript://x'/><Profile", [](auto& s) { return s.groups[0].video.size() == 1; },
     {"Of the session's sources 1 are left out: the first audio and the first video source count."}},
    {"out of range", "Port='8080'", "Port='70000'", [](auto& s) { return s.broadcast.http_port == 65535; }, {"the session: PortNumber cannot be 70000, 65535 is taken."}},
};
// clang-format on

TEST(SessionFile, OthersSessionsAreUnderstood) {
    for (const ForeignSession& row : kForeign) {
        SCOPED_TRACE(row.why);
        Files files;
        const SessionFile file = files.Read(With(kSession, row.from, row.to));
        EXPECT_TRUE(row.expected(file.session));
        EXPECT_EQ(file.notes, row.notes);
        // What is written back says the same, and keeps the rest.
        if (file.session.groups[0].profile->audiences.empty()) continue;
        const SessionFile again = files.Read(files.Written(file));
        EXPECT_TRUE(row.expected(again.session));
        EXPECT_EQ(again.notes.empty(),
                  file.notes.empty() || row.why == std::string("out of range"));
    }
}

TEST(SessionFile, AnotherFormOfTheSameIsUnderstood) {
    Files files;
    const SessionFile file = files.Read(
        "<!-- x --><o:Job xmlns:o='u'><o:wrap><SOURCEGROUP name='G'><o:things><o:source>"
        "<sourcetype>2</sourcetype><input>File://clip.avi</input><MARKIN Value='500'/></o:source>"
        "</o:things><PROFILE>" +
        kProfile +
        "</PROFILE></SOURCEGROUP></o:wrap><archive><filename>x.wmv</filename></archive></o:Job>");
    EXPECT_EQ(file.session.groups[0].name, "G");
    EXPECT_EQ(Video(file.session).input.input, "/home/shows/clip.avi");
    EXPECT_EQ(Video(file.session).mark_in_ms, 500);
    EXPECT_EQ(file.session.output, "/home/shows/x.wmv");
    EXPECT_TRUE(HasProfile(file.session));
    EXPECT_THAT(file.notes,
                ElementsAre("2 parts of the session were not understood; they are kept."));
    EXPECT_EQ(files.Read(files.Written(file)).session.groups[0].video[0].mark_in_ms, 500);
}

TEST(SessionFile, WhatCannotBeUsedIsRefusedWithItsReason) {
    const struct {
        const char* why;
        std::string from, to;
        std::vector<std::string> words;
    } kCases[] = {
        {"broken", "</Output>", "</Input>", {"line", "column"}},
        {"no number", "Port='8080'", "Port='http'", {"PortNumber", "http"}},
        {"no rectangle", "10,20,810,620", "10,20,810", {"Region"}},
        {"a scheme of others", "Scheme='ScreenCap'", "Scheme='MultiChannel'", {"multichannel"}},
        {"a broken profile", "<streamconfig", "<streamconfig<", {"profile cannot be used", "line"}},
        {"a profile file that is not there",
         "<![CDATA[\n" + kProfile + "\n]]>",
         "gone.prx",
         {"profile cannot be used", "/home/shows/gone.prx"}},
        {"a codec of others", "WMV3", "WVC1", {"WVC1", "stream 1"}},
        {"a pixel format that is none", "CroppingLeft='4'", "PixelFormat='blue'", {"blue"}},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.why);
        Files files;
        EXPECT_NE(test_support::ErrorNumber([&] { files.Read(With(kSession, row.from, row.to)); },
                                            row.words),
                  0U);
    }
    Files files;
    const std::string no_source =
        "<s><SourceGroup><Profile>" + kProfile + "</Profile></SourceGroup></s>";
    EXPECT_EQ(test_support::ErrorNumber([&] { files.Read(no_source); }, {"source"}),
              platform::kInvalidData);
    const std::string no_profile =
        "<s><SourceGroup><Source Type='audio' Input='a.wav'/></SourceGroup></s>";
    EXPECT_EQ(test_support::ErrorNumber([&] { files.Read(no_profile); }, {"profile"}),
              platform::kInvalidData);
    EXPECT_EQ(test_support::ErrorNumber([&] { files.Read("<s/>"); }, {"source group"}),
              platform::kInvalidData);
}

TEST(SessionFile, WhatSourcesNameIsNeverAnOutput) {
    const struct {
        const char* why;
        std::string sources;  // behind those of the session
    } kCases[] = {
        {"another group's",
         "<SourceGroup><AudioSource><File FileName='b.wav'/></AudioSource>"
         "<Broadcasting Port='9'/><Push Server='s'/></SourceGroup>"},
        {"a group's by its other name",
         "<Group><Reader><File FileName='b.wav'/><Broadcasting Port='9'/><Push Server='s'/>"
         "</Reader></Group>"},
        {"of no group",
         "<Sources><Audio><File FileName='b.wav'/><Broadcasting Port='9'/>"
         "<Push Server='s'/></Audio></Sources>"},
        {"a profile's",
         "<Profile><File FileName='b.wav'/><Broadcasting Port='9'/>"
         "<Push Server='s'/></Profile>"},
    };
    const std::size_t outputs = kSession.find("<Output>");
    const std::size_t display = kSession.find("<DisplayInfo>");
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.why);
        Files files;
        const std::string head =
            With(kSession.substr(0, outputs), "</SourceGroups>", row.sources + "</SourceGroups>");
        const SessionRecord with = files.Read(head + kSession.substr(outputs)).session;
        EXPECT_EQ(with.output, "/home/shows/lecture.wmv");
        EXPECT_EQ(with.broadcast.http_port, 8080);
        EXPECT_EQ(with.broadcast.server, "media.example");
        SessionFile without = files.Read(head + kSession.substr(display));
        EXPECT_EQ(without.session.output, "");
        EXPECT_EQ(without.session.broadcast.http_port, 0);
        EXPECT_EQ(without.session.broadcast.server, "");
        without.session.output = "/home/shows/new.wmv";
        const std::string written = files.Written(without);
        EXPECT_THAT(written, HasSubstr("b.wav"));
        EXPECT_EQ(files.Read(written).session.output, "/home/shows/new.wmv");
    }
}

TEST(SessionFile, WhatIsChangedIsWrittenWhereItStands) {
    Files files;
    const std::string text =
        With(With(kSession, "<Title>Lecture 3</Title><Rating>G</Rating>",
                  "<Texts><Title lang='en' Value='Lecture 3'/></Texts><Texts Rating=''/>"),
             "<Options", "<Plugin a='1'/><Options");
    SessionFile file = files.Read(text);
    SessionRecord& session = file.session;
    session.content.title = "Lecture 4";
    session.content.author = "A. Teacher";
    session.content.rating = "R";
    session.output = "/other/out.wmv";
    session.broadcast.http_port = 81;
    session.attributes[0].second = -3;
    session.attributes.emplace_back("New", "text");
    session.groups[0].video[0].input = SourceInput();
    session.groups[0].video[0].input.input = "/home/shows/clip.avi";
    session.groups[0].video[0].mark_in_ms = 7;
    const std::string written = files.Written(file);
    for (const char* part :
         {"<Title lang=\"en\" Value=\"Lecture 4\"", "<Texts Rating=\"R\"",
          "<Author>A. Teacher</Author>", "LocalFileName=\"/other/out.wmv\"",
          "Protocol=\"http\" Port=\"81\"", "<Plugin a=\"1\"",
          "Name=\"SurroundMix\" Type=\"dword\" Value=\"-3\"",
          "Name=\"New\" Type=\"string\" Value=\"text\"", "Scheme=\"File\" Input=\"clip.avi\"",
          "MarkIn=\"7\"", "secret=\"s\"", "Name=\"Lecture\"", "<Description>Camera</Description>"})
        EXPECT_THAT(written, HasSubstr(part));
    for (const char* part : {"lecture.wmv", "Lecture 3", "<Title>", "<Rating>"})
        EXPECT_THAT(written, Not(HasSubstr(part)));
}

TEST(SessionFile, ANewOneHasWhatWasSetAlone) {
    Files files;
    SessionRecord session;
    SourceGroupRecord& group = session.groups.emplace_back();
    group.name = "SG_1";
    group.video.push_back({});
    group.video[0].input.input = "/home/a.avi";
    group.profile = files.Read(kSession).session.groups[0].profile;
    group.profile->name = "] ]]> <";
    session.output = "b.wmv";
    const std::string text = WriteSession(session, files.folder, nullptr);
    for (const char* part : {"Broadcast", "Push", "DisplayInfo", "Attributes", "MarkIn", "audio"})
        EXPECT_THAT(text, Not(HasSubstr(part)));
    EXPECT_EQ(text.rfind("<?xml version=\"1.0\"?>", 0), 0U);
    const SessionFile again = files.Read(text);
    EXPECT_EQ(ProfileName(again.session), "] ]]> <");
    EXPECT_EQ(Video(again.session).input.input, "/home/a.avi");
    EXPECT_EQ(again.session.output, "/home/b.wmv") << "as seen from the session's folder";
    EXPECT_THAT(again.notes, IsEmpty());
    // Where the session stands in the working folder, names stay as they were given.
    const SessionFolder here(files.files, "/home/job.wme");
    EXPECT_EQ(ReadSession(WriteSession(session, here, nullptr), here).session.output, "b.wmv");
}

}  // namespace
}  // namespace engine::files
