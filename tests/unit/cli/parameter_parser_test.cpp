#include "cli/parameter_parser.h"

#include "parser_bench.h"
#include "support/error_of.h"
#include "support/row_name.h"

namespace cli_tests {
namespace {

using test_support::ErrorNumber;

struct AcceptedCase {
    const char* command;
    cli::EncodeSettings given;
};

// clang-format off
const AcceptedCase kAccepted[] = {
    {"-wme s.wme -saveprofile p.prx -loadprofile q.prx", {.wme = "s.wme", .loadprofile = "q.prx", .saveprofile = "p.prx"}},
    {"-input a.avi -output b.wmv -outputstring _low -silent", {.input = "a.avi", .output = "b.wmv", .outputstring = "_low", .silent = true}},
    {"-audioonly", {.audioonly = true}},
    {"-videoonly -verbose 1", {.videoonly = true, .verbose = 1}},
    {"-adevice 2", {.adevice = 2, .device_input = true}},
    {"-adevice", {.adevice = 0, .device_input = true}},
    {"-vdevice 1", {.vdevice = 1, .device_input = true}},
    {"-vdevice -silent", {.vdevice = 0, .silent = true, .device_input = true}},
    {"-profile SCRNA", {.profile = "SCRNA"}},
    {"-a_mode 7 -a_codec wma9std -a_setting q90_44_2", {.a_codec = "WMA9STD", .a_mode = 7, .a_setting = "q90_44_2"}},
    {"-a_codec wma9pro", {.a_codec = "WMA9PRO"}},
    {"-a_codec WMA9lsl", {.a_codec = "WMA9LSL"}},
    {"-a_codec WMSP9", {.a_codec = "WMSP9"}},
    {"-a_codec pcm", {.a_codec = "PCM"}},
    {"-a_peakbitrate 96000 -a_peakbuffer 3000", {.a_peakbitrate = 96000, .a_peakbuffer = 3000}},
    {"-a_content 0 -a_contentedl e.edl", {.a_content = 0, .a_contentedl = "e.edl"}},
    {"-a_content 2", {.a_content = 2}},
    {"-a_folddown6to2 10 3 4", {.a_folddown6to2 = {.surround = 10, .center = 3, .lfe = 4}}},
    {"-v_mode 4 -v_codec wmv7 -V_BITRATE 300000", {.v_codec = "WMV7", .v_mode = 4, .v_bitrate = 300000}},
    {"-v_codec WMV8", {.v_codec = "WMV8"}},
    {"-v_codec wmv9", {.v_codec = "WMV9"}},
    {"-v_codec wms9", {.v_codec = "WMS9"}},
    {"-v_codec mp41", {.v_codec = "MP41"}},
    {"-v_codec uncomp", {.v_codec = "UNCOMP"}},
    {"-v_width 320.5 -v_height 240 -v_width 640", {.v_width = 640, .v_height = 240}},
    {"-v_framerate 29.97 -v_keydist 8", {.v_framerate = 29970, .v_keydist = 8000}},
    {"-v_buffer 5000 -v_quality 1000", {.v_buffer = 5000, .v_quality = 1000}},
    {"-v_peakbitrate 450000 -v_peakbuffer 0", {.v_peakbitrate = 450000, .v_peakbuffer = 0}},
    {"-v_performance 0 -v_preproc 0", {.v_performance = 0, .v_preproc = 0}},
    {"-v_performance 100 -v_preproc 18", {.v_performance = 100, .v_preproc = 18}},
    {"-pixelformat yUy2 -pixelratio 16 15", {.pixelformat = "yUy2", .pixelratio = {.x = 16, .y = 15}}},
    {"-v_clip 1 2 3 4 -v_profile mp", {.v_clip = {.left = 1, .top = 2, .right = 3, .bottom = 4}, .v_profile = "MP"}},
    {"-broadcast 9000", {.broadcast = 9000}},
    {"-broadcast -output x", {.output = "x", .broadcast = 8080}},
    {"-push srv point", {.push = {.server_name = "srv", .publishing_point = "point"}}},
    {"-push srv point tmpl", {.push = {.server_name = "srv", .publishing_point = "point", .template_name = "tmpl"}}},
    {"-push srv point -silent", {.push = {.server_name = "srv", .publishing_point = "point"}, .silent = true}},
    {"-time 1000 5000", {.time = {.start = 1000, .end = 5000}}},
    {"-time 1000 end -duration 60", {.time = {.start = 1000, .end = 0}, .duration = 60, .duration_typed = true}},
    {"-title t -author a -copyright c -description d -rating r", {.title = "t", .author = "a", .copyright = "c", .description = "d", .rating = "r"}},
    {"-maxpacket 1400 -minpacket 200", {.maxpacket = 1400, .minpacket = 200}},
};
// clang-format on

class AcceptedCommands : public testing::TestWithParam<AcceptedCase> {};
INSTANTIATE_TEST_SUITE_P(Parser, AcceptedCommands, testing::ValuesIn(kAccepted),
                         [](const auto& row) {
                             return test_support::RowName(row.param.command, row.index);
                         });

TEST_P(AcceptedCommands, SetTheirOwnFieldsAndNoOthers) {
    ParserBench bench;
    EXPECT_TRUE(bench.Run(GetParam().command));
    EXPECT_TRUE(bench.settings == GetParam().given);
    EXPECT_EQ(bench.pane.lines, Lines{});
    EXPECT_FALSE(bench.parser.Refused());
}

struct RefusedCase {
    const char* why;
    const char* command;
    const char* line;           // "" = none
    cli::EncodeSettings given;  // what stays set
};

// clang-format off
const RefusedCase kRefused[] = {
    {"unknown word", "-silent -Foo", "Invalid parameter: -Foo", {.silent = true}},
    {"word without an option", "go", "Invalid parameter: go", {}},
    {"two blanks", "-silent  -audioonly", "Invalid parameter: ", {.silent = true}},
    {"value behind a flag", "-audioonly 1", "Invalid parameter: 1", {.audioonly = true}},
    {"listing word in company", "-devices -silent", "Invalid parameter: -devices", {}},
    {"help in company", "-help -silent", "Invalid parameter: -help", {}},
    {"audio codec by number", "-a_codec 2", "Please enter correct audio codec index only", {}},
    {"video codec unknown", "-v_codec WMV10", "Please enter correct video codec index only", {}},
    {"content above", "-A_Content 3", "Invalid range for parameter -A_Content", {}},
    {"filter above", "-v_preproc 19", "Invalid preproc value: 19", {}},
    {"filter above, as typed", "-v_preproc 18.6", "Invalid preproc value: 18.6", {}},
    {"performance between the levels", "-v_performance 50", "", {}},
    {"performance above", "-v_performance 120", "", {}},
    {"rate malformed", "-v_framerate x", "Expect float value for parameter -v_framerate", {}},
    {"rate missing", "-v_framerate", "Invalid format for parameter -v_framerate", {}},
    {"rate past single precision in thousandths", "-v_framerate 1e38", "Expect float value for parameter -v_framerate", {}},
    {"distance past 32 bits in milliseconds", "-v_keydist 2147484", "Expect integer value for parameter -v_keydist", {}},
    {"device malformed", "-adevice x", "Expect integer value for parameter -adevice", {.device_input = true}},
    {"port malformed", "-broadcast http", "Expect integer value for parameter -broadcast", {}},
    {"second push text empty", "-push srv ", "Invalid format for parameter -push", {.push = {.server_name = "srv"}}},
    {"second push text missing", "-push srv -silent", "Invalid format for parameter -push", {.push = {.server_name = "srv"}}},
    {"third of three", "-a_folddown6to2 10 3", "Invalid format for parameter -a_folddown6to2", {.a_folddown6to2 = {.surround = 10, .center = 3}}},
    {"second of two", "-pixelratio 4 x", "Expect integer value for parameter -pixelratio", {.pixelratio = {.x = 4}}},
    {"fourth of four", "-v_clip 1 2 3 -4", "Invalid format for parameter -v_clip", {.v_clip = {.left = 1, .top = 2, .right = 3}}},
    {"start mark", "-time x end", "Expect integer value for parameter -time", {}},
    {"end in upper case", "-time 1000 END", "Invalid format END expecting integer value", {.time = {.start = 1000}}},
    {"end mark -1", "-time 0 -1", "Invalid format -1 expecting integer value", {.time = {.start = 0}}},
    {"end mark negative", "-time 0 -5", "Invalid format -5 expecting integer value", {.time = {.start = 0}}},
    {"end mark is the next option", "-time 0 -silent", "Invalid format -silent expecting integer value", {.time = {.start = 0}}},
    {"end mark missing", "-time 0", "Invalid format for parameter -time", {.time = {.start = 0}}},
    {"empty input alone", "-input ", "Invalid format for parameter -input", {}},
    {"only the lower-case word reads a file", "-silent -CONFIG job", "Invalid format for parameter -CONFIG", {.silent = true}},
};
// clang-format on

class RefusedCommands : public testing::TestWithParam<RefusedCase> {};
INSTANTIATE_TEST_SUITE_P(Parser, RefusedCommands, testing::ValuesIn(kRefused),
                         test_support::NameOfRow());

TEST_P(RefusedCommands, LeaveOneLineAndWhatWasSetBefore) {
    ParserBench bench;
    EXPECT_FALSE(bench.Run(GetParam().command));
    EXPECT_EQ(bench.pane.lines, *GetParam().line == '\0' ? Lines{} : Lines{GetParam().line});
    EXPECT_TRUE(bench.settings == GetParam().given);
    EXPECT_TRUE(bench.parser.Refused());
    EXPECT_EQ(bench.actions.calls, Lines{});
}

TEST(ParameterParser, EveryTextOptionNeedsAText) {
    for (const std::string option :
         {"-wme",          "-input",   "-profile",     "-a_codec",     "-a_setting",
          "-a_contentedl", "-v_codec", "-pixelformat", "-v_profile",   "-output",
          "-outputstring", "-push",    "-title",       "-author",      "-copyright",
          "-description",  "-rating",  "-saveprofile", "-loadprofile", "-s_config",
          "-config"}) {
        SCOPED_TRACE(option);
        const Lines no_value{"Invalid format for parameter " + option};
        ParserBench bench;
        EXPECT_FALSE(bench.Run(option + "  -silent"));  // two blanks: an empty word
        EXPECT_EQ(bench.pane.Take(), no_value);
        EXPECT_FALSE(bench.Run(option + " -silent"));
        EXPECT_EQ(bench.pane.Take(), no_value);
        EXPECT_EQ(ErrorNumber([&] { bench.Run("-silent " + option); }, {option}),
                  platform::kElementNotFound);
        EXPECT_EQ(bench.pane.Take(), Lines{});
        EXPECT_TRUE(bench.parser.Refused());
    }
}

TEST(ParameterParser, EveryWholeNumberMustBeOne) {
    for (const std::string option :
         {"-a_mode",    "-a_peakbitrate", "-a_peakbuffer",  "-a_content",    "-a_folddown6to2",
          "-v_mode",    "-v_bitrate",     "-v_buffer",      "-v_width",      "-v_height",
          "-v_keydist", "-v_quality",     "-v_peakbitrate", "-v_peakbuffer", "-v_performance",
          "-v_preproc", "-pixelratio",    "-v_clip",        "-time",         "-duration",
          "-verbose",   "-maxpacket",     "-minpacket"}) {
        SCOPED_TRACE(option);
        ParserBench bench;
        EXPECT_FALSE(bench.Run("-silent " + option));
        EXPECT_FALSE(bench.Run(option + " -silent"));
        EXPECT_FALSE(bench.Run(option + " 4000000000"));
        EXPECT_FALSE(bench.Run(option + " Abc"));
        const std::string no_value = "Invalid format for parameter " + option;
        const std::string no_integer = "Expect integer value for parameter " + option;
        EXPECT_EQ(bench.pane.lines, (Lines{no_value, no_value, no_integer, no_integer}));
    }
}

TEST(ParameterParser, WordsThatStandAloneListOrShow) {
    const struct {
        const char* word;
        const char* call;
    } cases[] = {
        {"-devices", "ListDevices"},
        {"-a_codecs", "ListAudioCodecs"},
        {"-A_Formats", "ListAudioFormats"},
        {"-v_codecs", "ListVideoCodecs"},
        {"-HELP", "ShowHelp"},
        {"-?", "ShowHelp"},
        {"-all?", "ShowHelp"},
        {"/?", "ShowHelp"},
        {"-help?", "ShowHelpChm"},
        {"-INPUT movie.wmv", "PrintFileInfo"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.word);
        ParserBench bench;
        EXPECT_FALSE(bench.Run(row.word));
        EXPECT_FALSE(bench.parser.Refused());
        EXPECT_EQ(bench.actions.calls, Lines{row.call});
        EXPECT_EQ(bench.pane.lines, Lines{});
    }
}

TEST(ParameterParser, AnInputThatCannotBeReadLeavesTheSettingEmpty) {
    for (const char* const command : {"-input -silent", "-silent -input -silent"}) {
        ParserBench bench;
        bench.settings.input = "earlier.avi";
        bench.settings.output = "earlier.wmv";
        EXPECT_FALSE(bench.Run(command));
        EXPECT_EQ(bench.settings.input, "") << command;
        EXPECT_FALSE(bench.Run("-output -silent"));
        EXPECT_EQ(bench.settings.output, "earlier.wmv") << "others keep what they had";
    }
}

TEST(ParameterParser, AnEmptyOptionalTextIsTaken) {
    ParserBench bench;
    bench.settings.push.template_name = "old";
    EXPECT_TRUE(bench.Run("-push srv point  -silent"));
    EXPECT_EQ(bench.settings.push.template_name, "");
    EXPECT_TRUE(bench.settings.silent);
}

TEST(ParameterParser, ValuesCarryOverToLaterCommands) {
    ParserBench bench;
    EXPECT_TRUE(bench.Run("-input a.avi -output b.wmv -v_bitrate 300000 -adevice -duration 5"));
    EXPECT_TRUE(bench.Run("-input c.wmv -output d.wmv"));
    const cli::EncodeSettings given = {.input = "c.wmv",
                                       .output = "d.wmv",
                                       .adevice = 0,
                                       .duration = 5,
                                       .v_bitrate = 300000,
                                       .device_input = true};
    EXPECT_TRUE(bench.settings == given)
        << "all but the knowledge that -duration stands in the running command";
    EXPECT_FALSE(bench.Run("-v_bitrate x"));
    EXPECT_EQ(bench.settings.v_bitrate, 300000) << "a value that fails overwrites nothing";
    EXPECT_TRUE(bench.parser.Refused());
    EXPECT_TRUE(bench.Run("-silent"));
    EXPECT_FALSE(bench.parser.Refused());
}

}  // namespace
}  // namespace cli_tests
