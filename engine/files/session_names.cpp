#include "engine/files/session_names.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "engine/files/xml_tree.h"
#include "platform/text.h"

namespace engine::files {

namespace {

// Beside the names of the header.
constexpr std::string_view kOtherNames[] = {
    "EncoderSession",
    "major_version",
    "minor_version",
    "Description",
    "SourceGroups",
    "MarkIn",
    "MarkOut",
    "PreProcessPass",
    "ContentMode",
    "ContentEDL",
    "Optimization",
    "PixelFormat",
    "PixelAspectRatioX",
    "PixelAspectRatioY",
    "CroppingLeft",
    "CroppingTop",
    "CroppingRight",
    "CroppingBottom",
    "CroppingLeftMargin",
    "CroppingTopMargin",
    "CroppingRightMargin",
    "CroppingBottomMargin",
    "Property",
    "Broadcast",
    "Push",
    "Title",
    "Author",
    "Copyright",
    "Rating",
    "Attribute",
    "AutoStop",
    "Performance",
};
constexpr Names kKnown[] = {
    kGroupNames,   kSourceNames,      kProfileNames,  kTypeNames,       kSchemeNames,
    kInputNames,   kProfileFileNames, kOutputNames,   kOutputFileNames, kPortNames,
    kServerNames,  kPointNames,       kTemplateNames, kDisplayNames,    kAttributesNames,
    kOptionsNames, kNameNames,        kValueNames,    kOtherNames,
};

// What the program does in any case; other values ask for what it does not do.
struct FixedRow {
    std::string_view name;
    std::array<std::string_view, 5> values;  // "" among them: not set
};
// clang-format off
constexpr FixedRow kFixed[] = {
    {"AutoArchive", {"1", "true", "start", "continue"}},
    {"AutoIndex",   {"1", "true"}},
    {"AutoRemove",  {"0", "false"}},
    {"MaxDuration", {"0", "-1"}},
    {"MaxSize",     {"0", "-1"}},
    {"Protocol",    {"http"}},
    {"Repeat",      {"0", "false"}},
};
// clang-format on

bool IsUnderstood(std::string_view name, std::string_view value) {
    const auto fixed =
        std::ranges::find_if(kFixed, [&](const FixedRow& row) { return IsNamed(name, row.name); });
    if (fixed != std::end(kFixed)) return IsOneOf(platform::TrimBlanks(value), fixed->values);
    return std::any_of(std::begin(kKnown), std::end(kKnown),
                       [&](Names names) { return IsOneOf(name, names); });
}

bool DeclaresPrefix(std::string_view name) { return name.substr(0, 5) == "xmlns"; }

pugi::xml_node ChildOf(const pugi::xml_node& node, Names names) {
    return node.find_child([&](const pugi::xml_node& child) {
        return child.type() == pugi::node_element && IsOneOf(child.name(), names);
    });
}

pugi::xml_attribute AttributeOf(const pugi::xml_node& node, Names names) {
    return node.find_attribute(
        [&](const pugi::xml_attribute& attribute) { return IsOneOf(attribute.name(), names); });
}

std::string ValueIn(const pugi::xml_node& node) {
    const pugi::xml_attribute value = AttributeOf(node, kValueNames);
    return value ? value.value() : TextIn(node);
}

}  // namespace

bool IsOneOf(std::string_view name, Names names) {
    return std::any_of(names.begin(), names.end(),
                       [&](std::string_view wanted) { return IsNamed(name, wanted); });
}

pugi::xml_node Descendant(const pugi::xml_node& node, Names names) {
    return node.find_node([&](const pugi::xml_node& below) {
        return below.type() == pugi::node_element && IsOneOf(below.name(), names);
    });
}

bool HasValue(const pugi::xml_node& node, Names names) {
    return AttributeOf(node, names) || ChildOf(node, names);
}

std::string ValueOf(const pugi::xml_node& node, Names names) {
    if (const pugi::xml_attribute attribute = AttributeOf(node, names)) return attribute.value();
    return ValueIn(ChildOf(node, names));
}

void SetValue(pugi::xml_node node, Names names, const std::string& value) {
    if (ValueOf(node, names) == value) return;
    if (pugi::xml_attribute attribute = AttributeOf(node, names)) {
        attribute.set_value(value.c_str());
        return;
    }
    pugi::xml_node child = ChildOf(node, names);
    if (!child) {
        node.append_attribute(std::string(names.front()).c_str()).set_value(value.c_str());
        return;
    }
    if (pugi::xml_attribute attribute = AttributeOf(child, kValueNames))
        attribute.set_value(value.c_str());
    else
        child.text().set(value.c_str());
}

std::string TextIn(const pugi::xml_node& node) {
    std::string text;
    for (const pugi::xml_node& child : node.children())
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            text += child.value();
    return text;
}

int CountUnknown(const pugi::xml_node& root) {
    int unknown = 0;
    for (const pugi::xml_attribute& attribute : root.attributes())
        if (!DeclaresPrefix(attribute.name()) && !IsUnderstood(attribute.name(), attribute.value()))
            ++unknown;
    for (const pugi::xml_node& child : root.children()) {
        if (child.type() != pugi::node_element || IsOneOf(child.name(), kProfileNames)) continue;
        unknown += (IsUnderstood(child.name(), ValueIn(child)) ? 0 : 1) + CountUnknown(child);
    }
    return unknown;
}

}  // namespace engine::files
