#include "cli/value_readers.h"

#include "support/error_of.h"
#include "support/fake_host.h"

namespace cli_tests {
namespace {

using Lines = std::vector<std::string>;

struct NumberCase {
    const char* why;
    const char* word;
    double read;  // -1 = refused
    const char* line;
};

const char kNoValue[] = "Invalid format for parameter -Opt";
const char kNoInteger[] = "Expect integer value for parameter -Opt";
const char kNoFloat[] = "Expect float value for parameter -Opt";

Lines LinesOf(const char* line) { return *line == '\0' ? Lines{} : Lines{line}; }

TEST(ValueReaders, ReadIntegerRoundsAndKeepsTo32Bits) {
    const NumberCase cases[] = {
        // why                            word              read        line
        {"plain", "300000", 300000, ""},
        {"half goes to the even one below", "320.5", 320, ""},
        {"half goes to the even one above", "321.5", 322, ""},
        {"just above a half", "320.5000001", 321, ""},
        {"a half below one", ".5", 0, ""},
        {"plus sign", "+7", 7, ""},
        {"blanks around, from a shell", "  42 ", 42, ""},
        {"exponent", "3e5", 300000, ""},
        {"largest", "2147483647", 2147483647.0, ""},
        {"rounds back into range", "2147483647.4", 2147483647.0, ""},
        {"rounds out of range", "2147483647.5", -1, kNoInteger},
        {"past 32 bits", "4000000000", -1, kNoInteger},
        {"past any number", "1e999", -1, kNoInteger},
        {"letters", "Abc", -1, kNoInteger},
        {"letters behind digits", "12x", -1, kNoInteger},
        {"thousands separator", "300,000", -1, kNoInteger},
        {"hexadecimal", "0x10", -1, kNoInteger},
        {"not a number by name", "nan", -1, kNoInteger},
        {"infinity by name", "inf", -1, kNoInteger},
        {"signed infinity", "+inf", -1, kNoInteger},
        {"two signs", "+-5", -1, kNoInteger},
        {"sign alone", "+", -1, kNoInteger},
        {"point alone", ".", -1, kNoInteger},
        {"empty word", "", -1, kNoInteger},
        {"negative behind a blank", " -5", -1, kNoInteger},
        {"the mark behind a blank", " -1", -1, kNoInteger},
        {"a dash is no value", "-5", -1, kNoValue},
        {"the next option is no value", "-v_width", -1, kNoValue},
    };
    for (const NumberCase& row : cases) {
        SCOPED_TRACE(row.why);
        test_support::RecordingPane pane;
        cli::ValueReaders readers(pane);
        EXPECT_EQ(readers.ReadInteger({"first", "-Opt", row.word}, 1, 2), row.read);
        EXPECT_EQ(pane.lines, LinesOf(row.line));
    }
}

TEST(ValueReaders, ReadFloatKeepsFractions) {
    const NumberCase cases[] = {
        // why                 word      read     line
        {"whole", "15", 15, ""},
        {"fraction", "29.97", static_cast<double>(29.97F), ""},
        {"past single precision", "1e39", -1, kNoFloat},
        {"decimal comma", "29,97", -1, kNoFloat},
        {"not a number by name", "NaN", -1, kNoFloat},
        {"negative behind a blank", " -2.5", -1, kNoFloat},
        {"a dash is no value", "-2.5", -1, kNoValue},
    };
    for (const NumberCase& row : cases) {
        SCOPED_TRACE(row.why);
        test_support::RecordingPane pane;
        cli::ValueReaders readers(pane);
        EXPECT_EQ(readers.ReadFloat({"-Opt", row.word}, 0, 1), static_cast<float>(row.read));
        EXPECT_EQ(pane.lines, LinesOf(row.line));
    }
}

TEST(ValueReaders, ConvertStringToIntegerNamesTheText) {
    const NumberCase cases[] = {
        // why                  text    read  line
        {"plain", "44", 44, ""},
        {"rounded", "44.5", 44, ""},
        {"negative", "-44", -44, ""},
        {"negative half", "-2.5", -2, ""},
        {"the failure mark", "-1", -1, "Invalid format -1 expecting integer value"},
        {"word", "END", -1, "Invalid format END expecting integer value"},
        {"empty", "", -1, "Invalid format  expecting integer value"},
    };
    for (const NumberCase& row : cases) {
        SCOPED_TRACE(row.why);
        test_support::RecordingPane pane;
        cli::ValueReaders readers(pane);
        EXPECT_EQ(readers.ConvertStringToInteger(row.word), row.read);
        EXPECT_EQ(pane.lines, LinesOf(row.line));
    }
}

TEST(ValueReaders, ReadStringGivesTheWordAsTyped) {
    test_support::RecordingPane pane;
    cli::ValueReaders readers(pane);
    EXPECT_EQ(readers.ReadString({"-Opt", " My Film "}, 0, 1), " My Film ");
    EXPECT_EQ(pane.Take(), Lines{});
    EXPECT_EQ(readers.ReadString({"-Opt", "-x"}, 0, 1), "");
    EXPECT_EQ(pane.Take(), Lines{kNoValue});
    EXPECT_EQ(readers.ReadString({"-Opt", ""}, 0, 1), "");
    EXPECT_EQ(pane.Take(), Lines{kNoValue});
}

TEST(ValueReaders, MissingLastWord) {
    test_support::RecordingPane pane;
    cli::ValueReaders readers(pane);
    EXPECT_EQ(readers.ReadInteger({"-Opt"}, 0, 1), -1);
    EXPECT_EQ(pane.Take(), Lines{kNoValue});
    EXPECT_EQ(readers.ReadFloat({"-Opt"}, 0, 1), -1.0F);
    EXPECT_EQ(pane.Take(), Lines{kNoValue});
    EXPECT_EQ(test_support::ErrorNumber([&] { readers.ReadString({"-Opt"}, 0, 1); }, {"-Opt"}),
              platform::kElementNotFound);
    EXPECT_EQ(pane.Take(), Lines{});
}

}  // namespace
}  // namespace cli_tests
