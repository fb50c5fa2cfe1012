// XML that comes from anybody: parsed within limits, searched without regard to case and prefixes.
#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace engine::files {

/// Throws Error (invalid data): with line and column for what is not well-formed; for more elements
/// or a deeper tree than any file has reason for; for a document type, whose entities are none of
/// ours.
void ParseXml(const std::string& utf8, pugi::xml_document& document);

/// The document as text, its elements indented. A declaration's encoding is left out: the text gets
/// its own.
std::string XmlText(pugi::xml_document& document);

/// Whether a name, without its prefix, is `wanted` in any case.
bool IsNamed(std::string_view name, std::string_view wanted);

/// The first child element or attribute with that name; null ones when there is none.
pugi::xml_node ChildNamed(const pugi::xml_node& node, std::string_view name);
pugi::xml_attribute AttributeNamed(const pugi::xml_node& node, std::string_view name);

/// The same, but makes the one that is missing.
pugi::xml_node NeedChild(pugi::xml_node node, const char* name);
/// Sets the attribute, made where it is missing.
void Put(pugi::xml_node node, const char* name, const std::string& value);

}  // namespace engine::files
