// By which names the parts of a session are recognised, and where a value stands that has one of
// them.
#pragma once

#include <pugixml.hpp>
#include <span>
#include <string>
#include <string_view>

namespace engine::files {

/// The first is the one that is written.
using Names = std::span<const std::string_view>;

// clang-format off
inline constexpr std::string_view
    kGroupNames[]       = {"SourceGroup", "Group"},
    kSourceNames[]      = {"Source", "AudioSource", "VideoSource"},
    kProfileNames[]     = {"Profile"},
    kTypeNames[]        = {"Type", "SourceType"},
    kSchemeNames[]      = {"Scheme", "SchemeType"},
    kInputNames[]       = {"Input", "InputSource", "Resource", "File", "URL", "FileName"},
    kProfileFileNames[] = {"File", "FileName", "Path"},
    kOutputNames[]      = {"Output", "File", "Archive"},
    kOutputFileNames[]  = {"LocalFileName", "FileName"},
    kPortNames[]        = {"Port", "PortNumber", "HttpPort"},
    kServerNames[]      = {"ServerName", "Server"},
    kPointNames[]       = {"PublishingPoint"},
    kTemplateNames[]    = {"Template", "TemplatePublishingPoint"},
    kDisplayNames[]     = {"DisplayInfo", "DisplayInformation"},
    kAttributesNames[]  = {"Attributes"},
    kOptionsNames[]     = {"Options"},
    kNameNames[]        = {"Name"},
    kValueNames[]       = {"Value"};
// clang-format on

bool IsOneOf(std::string_view name, Names names);

/// The first element below `node` with one of the names, however deep.
pugi::xml_node Descendant(const pugi::xml_node& node, Names names);

/// Whether an attribute or a child element has one of the names.
bool HasValue(const pugi::xml_node& node, Names names);
/// The text of an attribute, or of a child element or its "Value"; "" where there is none.
std::string ValueOf(const pugi::xml_node& node, Names names);
/// Sets it where it stands, else as an attribute with the first name. An empty value that stands
/// nowhere is not written.
void SetValue(pugi::xml_node node, Names names, const std::string& value);

/// The text in an element, all its pieces together.
std::string TextIn(const pugi::xml_node& node);

/// How many elements and attributes below the root, profiles left out, have names that say nothing
/// here, or ask for what is not done here.
int CountUnknown(const pugi::xml_node& root);

}  // namespace engine::files
