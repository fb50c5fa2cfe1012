#include "engine/files/xml_tree.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/error.h"
#include "platform/text.h"

namespace engine::files {

namespace {

constexpr int kMostDepth = 64;
constexpr std::ptrdiff_t kMostElements = 20'000;

[[noreturn]] void Refuse(const std::string& reason) {
    throw platform::Error(platform::kInvalidData, reason);
}

std::string PlaceIn(const std::string& text, std::ptrdiff_t offset) {
    const auto place = std::min<std::size_t>(static_cast<std::size_t>(offset), text.size());
    const std::string_view before(text.data(), place);
    const std::size_t line_begin = before.rfind('\n') + 1;  // of the first line 0
    return fmt::format("line {}, column {}", 1 + std::count(before.begin(), before.end(), '\n'),
                       1 + platform::CharacterCount(before.substr(line_begin)));
}

void CheckDepth(int depth) {
    if (depth > kMostDepth) Refuse(fmt::format("its elements stand more than {} deep", kMostDepth));
}

/// Node by node, not by recursion: what is too deep must not be descended.
void CheckTree(const pugi::xml_document& document) {
    int depth = 1;
    pugi::xml_node node = document.first_child();
    while (node) {
        if (node.type() == pugi::node_doctype) Refuse("it has a document type, which is not read");
        if (node.first_child()) {
            CheckDepth(++depth);
            node = node.first_child();
            continue;
        }
        while (!node.next_sibling()) {
            node = node.parent();
            --depth;
            if (depth == 0) return;
        }
        node = node.next_sibling();
    }
}

}  // namespace

void ParseXml(const std::string& utf8, pugi::xml_document& document) {
    if (std::count(utf8.begin(), utf8.end(), '<') > 2 * kMostElements)
        Refuse(fmt::format("it has more than {} elements", kMostElements));
    constexpr unsigned kFlags = pugi::parse_default | pugi::parse_comments | pugi::parse_pi |
                                pugi::parse_declaration | pugi::parse_doctype;
    const pugi::xml_parse_result result =
        document.load_buffer(utf8.data(), utf8.size(), kFlags, pugi::encoding_utf8);
    if (!result)
        Refuse(fmt::format("it is no well-formed XML: {} at {}", result.description(),
                           PlaceIn(utf8, result.offset)));
    CheckTree(document);
}

std::string XmlText(pugi::xml_document& document) {
    struct Writer : pugi::xml_writer {
        void write(const void* data, std::size_t size) override {
            text.append(static_cast<const char*>(data), size);
        }
        std::string text;
    } writer;
    for (pugi::xml_node node : document.children())
        if (node.type() == pugi::node_declaration)
            node.remove_attribute(AttributeNamed(node, "encoding"));
    document.save(writer, "  ", pugi::format_indent | pugi::format_no_declaration,
                  pugi::encoding_utf8);
    return writer.text;
}

bool IsNamed(std::string_view name, std::string_view wanted) {
    const std::size_t colon = name.rfind(':');
    if (colon != std::string_view::npos) name.remove_prefix(colon + 1);
    return name.size() == wanted.size() && platform::LowerCase(name) == platform::LowerCase(wanted);
}

pugi::xml_node ChildNamed(const pugi::xml_node& node, std::string_view name) {
    return node.find_child(
        [&](const pugi::xml_node& child) { return IsNamed(child.name(), name); });
}

pugi::xml_attribute AttributeNamed(const pugi::xml_node& node, std::string_view name) {
    return node.find_attribute(
        [&](const pugi::xml_attribute& attribute) { return IsNamed(attribute.name(), name); });
}

pugi::xml_node NeedChild(pugi::xml_node node, const char* name) {
    pugi::xml_node child = ChildNamed(node, name);
    return child ? child : node.append_child(name);
}

void Put(pugi::xml_node node, const char* name, const std::string& value) {
    pugi::xml_attribute attribute = AttributeNamed(node, name);
    if (!attribute) attribute = node.append_attribute(name);
    attribute.set_value(value.c_str());
}

}  // namespace engine::files
