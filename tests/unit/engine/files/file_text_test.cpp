// Texts in the encodings that files come in, and XML within its limits.
#include "engine/files/file_text.h"

#include "engine/files/xml_tree.h"
#include "engine/files/xml_values.h"
#include "support/error_of.h"

namespace engine::files {
namespace {

using namespace std::string_literals;

const struct EncodedText {
    const char* why;
    std::string bytes;
    std::string utf8;  // "" = refused
} kEncodedTexts[] = {
    {"UTF-8", "<\xC3\xA9>", "<\xC3\xA9>"},
    {"UTF-8 with a mark", "\xEF\xBB\xBF<a>", "<a>"},
    {"low bytes first", "<\0\xE9\0>\0"s, "<\xC3\xA9>"},
    {"low bytes first with a mark", "\xFF\xFE<\0a\0>\0"s, "<a>"},
    {"high bytes first", "\0<\0a\0>"s, "<a>"},
    {"high bytes first with a mark", "\xFE\xFF\0<\x4E\x2D\0>"s, "<\xE4\xB8\xAD>"},
    {"a blank line first, without a mark", "\r\0\n\0<\0>\0"s, "\r\n<>"},
    {"four bytes each, low first", "\xFF\xFE\0\0<\0\0\0\x30\xF4\x01\0"s, "<\xF0\x9F\x90\xB0"},
    {"four bytes each, high first", "\0\0\0<\0\1\xF4\x30"s, "<\xF0\x9F\x90\xB0"},
    {"two surrogates", "<\0\x3D\xD8\x30\xDC"s, "<\xF0\x9F\x90\xB0"},
    {"with its terminator", "<\0>\0\0\0\0\0"s, "<>"},
    {"half a surrogate", "<\0\x3D\xD8>\0"s, ""},
    {"surrogates in the wrong order", "<\0\x30\xDC\x3D\xD8"s, ""},
    {"half a character at the end", "<\0>\0a"s, ""},
    {"a byte of another encoding", "<\xE9>", ""},
    {"surrogates in UTF-8", "<\xED\xA0\xBD\xED\xB0\xB0>", ""},
    {"zeroes in the middle", "<a\0>"s, ""},
    {"past the last character", "\0\0\0<\0\x11\0\0"s, ""},
};

TEST(FileText, IsReadInEveryEncodingAndWrittenInOne) {
    for (const EncodedText& row : kEncodedTexts) {
        SCOPED_TRACE(row.why);
        if (row.utf8.empty()) {
            EXPECT_EQ(test_support::ErrorNumber([&] { DecodeText(row.bytes); }),
                      platform::kInvalidData);
            continue;
        }
        EXPECT_EQ(DecodeText(row.bytes), row.utf8);
        if (row.utf8.find('\r') != std::string::npos) continue;
        EXPECT_EQ(DecodeText(EncodeText(row.utf8)), row.utf8);
    }
    EXPECT_EQ(EncodeText("a\n"),
              "\xFF\xFE"
              "a\0\r\0\n\0"s);
    EXPECT_EQ(DecodeText(""), "");
}

std::string Repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

TEST(XmlTree, IsHeldToItsLimits) {
    const struct {
        const char* why;
        std::string text;
        std::string refusal;  // a part of it; "" = taken
    } kCases[] = {
        {"as deep as may be", Repeated("<a>", 64) + Repeated("</a>", 64), ""},
        {"deeper", Repeated("<a>", 65) + Repeated("</a>", 65), "64 deep"},
        {"never closed", Repeated("<a>", 30000), "at line 1"},
        {"many", "<a>" + Repeated("<b/>", 19000) + "</a>", ""},
        {"too many", "<a>" + Repeated("<b/>", 50000) + "</a>", "elements"},
        {"where it breaks", "<a>\n <b>\xC3\xA9</c></a>", "line 2, column 8"},
        {"a document type", "<!DOCTYPE a SYSTEM \"file:///etc/passwd\"><a/>", "document type"},
        {"no markup", "profile", "well-formed"},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.why);
        pugi::xml_document document;
        const std::string refusal =
            test_support::ErrorOf([&] { ParseXml(row.text, document); }).description();
        EXPECT_EQ(refusal.empty(), row.refusal.empty()) << refusal;
        EXPECT_THAT(refusal, testing::HasSubstr(row.refusal));
    }
}

TEST(XmlTree, EntitiesOfOthersStayText) {
    pugi::xml_document document;
    ParseXml("<a b='&amp;&other;&#x41;'/>", document);
    EXPECT_STREQ(AttributeNamed(ChildNamed(document, "A"), "B").value(), "&&other;A");
}

TEST(XmlValues, NumbersAsFilesSpellThem) {
    constexpr std::int64_t kHuge = std::int64_t{1} << 60;
    const struct {
        const char* text;
        std::optional<std::int64_t> number;
    } kCases[] = {
        {"12", 12},
        {" 7 ", 7},
        {"-3", -3},
        {"0x1F", 31},
        {"0XfF", 255},
        {"-0x10", -16},
        {"", {}},
        {"-", {}},
        {"1.5", {}},
        {"12a", {}},
        {"0x", {}},
        {"--1", {}},
        {"99999999999999999999999", kHuge},
        {"-99999999999999999999999", -kHuge},
        {"9223372036854775807", kHuge},
    };
    for (const auto& row : kCases) EXPECT_EQ(ParseNumber(row.text), row.number) << row.text;
}

}  // namespace
}  // namespace engine::files
