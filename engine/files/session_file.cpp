#include "engine/files/session_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <pugixml.hpp>
#include <utility>
#include <variant>

#include "engine/files/profile_file.h"
#include "engine/files/session_names.h"
#include "engine/files/session_source.h"
#include "engine/files/xml_tree.h"
#include "engine/files/xml_values.h"
#include "engine/plan/value_ranges.h"
#include "platform/text.h"

namespace engine::files {

namespace {

using platform::SourceType;

constexpr std::string_view kAutoStop[] = {"AutoStop"};
constexpr std::string_view kPerformance[] = {"Performance"};

struct DisplayRow {
    const char* name;
    std::string ContentDescription::*text;
};
constexpr DisplayRow kDisplay[] = {
    {"Title", &ContentDescription::title},
    {"Author", &ContentDescription::author},
    {"Copyright", &ContentDescription::copyright},
    {"Description", &ContentDescription::description},
    {"Rating", &ContentDescription::rating},
};

[[noreturn]] void Refuse(const std::string& reason) {
    throw platform::Error(platform::kInvalidData, reason);
}

bool IsWithin(pugi::xml_node node, const pugi::xml_node& holder) {
    for (; node; node = node.parent())
        if (node == holder) return true;
    return false;
}

bool HasWord(const pugi::xml_node& node, std::string_view word) {
    return platform::LowerCase(node.name()).find(word) != std::string::npos;
}

/// Whether an element belongs to the session's sources: to its group, to another one, or to sources
/// that stand in none. What is named there is read, and must never be written to.
bool BelongsToSources(pugi::xml_node node, const pugi::xml_node& group) {
    for (; node; node = node.parent()) {
        if (node == group) return true;
        if (IsWithin(group, node)) return false;
        if (IsOneOf(node.name(), kGroupNames) || IsOneOf(node.name(), kProfileNames) ||
            HasWord(node, "source"))
            return true;
    }
    return false;
}

/// The first element that `fits` and is none of the sources'.
pugi::xml_node FindOutside(const pugi::xml_node& root, const pugi::xml_node& group,
                           const std::function<bool(const pugi::xml_node&)>& fits) {
    return root.find_node([&](const pugi::xml_node& node) {
        return node.type() == pugi::node_element && fits(node) && !BelongsToSources(node, group);
    });
}

/// The parts of a session's document; null ones where they are missing.
struct SessionParts {
    explicit SessionParts(const pugi::xml_document& document)
        : root(document.find_child(
              [](const pugi::xml_node& node) { return node.type() == pugi::node_element; })),
          group(Descendant(document, std::span(kGroupNames).first(1))) {
        if (!group) group = Descendant(document, kGroupNames);
        file = FindOutside(root, group, [](const pugi::xml_node& node) {
            if (!ValueOf(node, std::span(kOutputFileNames).first(1)).empty()) return true;
            return IsOneOf(node.name(), kOutputNames) && !ValueOf(node, kOutputFileNames).empty();
        });
        broadcast = FindOutside(root, group, [](const pugi::xml_node& node) {
            return HasWord(node, "broadcast") && !ValueOf(node, kPortNames).empty();
        });
        push = FindOutside(root, group, [](const pugi::xml_node& node) {
            // Servers are named for much else.
            return !ValueOf(node, kServerNames).empty() &&
                   (HasWord(node, "push") || !ValueOf(node, kPointNames).empty());
        });
        profile = Descendant(group, kProfileNames);
        display = Descendant(root, kDisplayNames);
        attributes = Descendant(root, kAttributesNames);
        options = Descendant(root, kOptionsNames);
    }

    pugi::xml_node root, group, profile, file, broadcast, push, display, attributes, options;
};

/// What holds a text of the display information: it, or an element within; it also where nothing
/// does.
pugi::xml_node DisplayHolder(const pugi::xml_node& display, Names names) {
    if (HasValue(display, names)) return display;
    const pugi::xml_node within =
        display.find_node([&](const pugi::xml_node& node) { return HasValue(node, names); });
    return within ? within : display;
}

/// The element with its content, as a document of its own.
std::string TextOf(const pugi::xml_node& node) {
    pugi::xml_document document;
    document.append_copy(node);
    return XmlText(document);
}

ProfileRecord ReadEmbedded(const pugi::xml_node& node, const SessionFolder& folder,
                           std::vector<std::string>& notes) {
    const auto take = [&](const std::string& text) {
        ProfileFile file = ReadProfile(text);
        notes.insert(notes.end(), file.notes.begin(), file.notes.end());
        return std::move(file.profile);
    };
    std::string text = TextIn(node);
    text.erase(0, std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    if (platform::StartsWith(text, "<")) return take(text);
    if (ChildNamed(node, "streamconfig")) return take(TextOf(node));
    if (const pugi::xml_node inner = ChildNamed(node, "profile")) return take(TextOf(inner));
    std::string file = ValueOf(node, kProfileFileNames);
    if (file.empty()) file = platform::TrimBlanks(text.substr(0, text.find_first_of("\r\n")));
    if (!file.empty()) return take(folder.ReadProfileText(file));
    ProfileRecord named;
    named.name = ValueOf(node, kNameNames);
    if (named.name.empty()) Refuse("its profile has no content, file or name");
    return named;
}

ProfileRecord ReadSessionProfile(const pugi::xml_node& node, const SessionFolder& folder,
                                 std::vector<std::string>& notes) {
    if (!node) Refuse("its source group has no profile");
    try {
        return ReadEmbedded(node, folder, notes);
    } catch (const platform::Error& error) {
        throw platform::Error(error.unsigned_number(),
                              "its profile cannot be used: " + error.description());
    }
}

SourceGroupRecord ReadGroup(const SessionParts& parts, const SessionFolder& folder,
                            std::vector<std::string>& notes) {
    SourceGroupRecord group;
    group.name = ValueOf(parts.group, kNameNames);
    int left_out = 0;
    for (const FoundSource& found : FindSources(parts.group)) {
        if (found.type == SourceType::Audio && group.audio.empty())
            group.audio.push_back(ReadAudioSource(found.node, folder, notes));
        else if (found.type == SourceType::Video && group.video.empty())
            group.video.push_back(ReadVideoSource(found.node, folder, notes));
        else
            ++left_out;
    }
    if (group.audio.empty() && group.video.empty())
        Refuse("its source group has neither an audio nor a video source");
    if (left_out > 0)
        notes.push_back(
            fmt::format("Of the session's sources {} are left out: the first audio and "
                        "the first video source count.",
                        left_out));
    group.profile = ReadSessionProfile(parts.profile, folder, notes);
    return group;
}

/// The number that a text is, held to a range; `fallback` where there is none.
std::int32_t ReadNumber(const std::string& text, const ValueRange& range, std::int32_t fallback,
                        std::vector<std::string>& notes) {
    if (text.empty()) return fallback;
    const ValueReader reader("the session", notes);
    const auto number = ParseNumber(text);
    if (!number)
        reader.Refuse(platform::kInvalidData,
                      fmt::format("{}=\"{}\" is no number", range.property, text));
    return reader.Clamped(range, *number);
}

bool IsTrue(const std::string& text) {
    return platform::LowerCase(text) == "true" || ParseNumber(text).value_or(0) != 0;
}

/// Nothing for a value that the session's attributes cannot hold.
std::optional<platform::AttributeValue> ReadAttribute(const pugi::xml_node& node) {
    const std::string text = ValueOf(node, kValueNames);
    std::string type = platform::LowerCase(ValueOf(node, kTypeNames));
    if (type.empty()) type = platform::LowerCase(node.name());
    const auto has = [&](const char* word) { return type.find(word) != std::string::npos; };
    if (has("bool")) return std::int32_t{IsTrue(text) ? 1 : 0};
    if (has("bytes") || has("binary")) return std::nullopt;
    if (!has("word")) return text;
    const auto number = ParseNumber(text);
    using Limits = std::numeric_limits<std::int32_t>;
    if (!number || *number < Limits::min() || *number > Limits::max()) return std::nullopt;
    return static_cast<std::int32_t>(*number);
}

void ReadAttributes(const pugi::xml_node& node, SessionRecord& session, int& unknown) {
    for (const pugi::xml_node& child : node.children()) {
        const std::string name = ValueOf(child, kNameNames);
        if (name.empty()) continue;
        if (const auto value = ReadAttribute(child))
            session.attributes.emplace_back(name, *value);
        else
            ++unknown;
    }
}

pugi::xml_node AttributeElement(pugi::xml_node attributes, const std::string& name) {
    for (const pugi::xml_node& child : attributes.children())
        if (ValueOf(child, kNameNames) == name) return child;
    pugi::xml_node child = attributes.append_child("Attribute");
    Put(child, "Name", name);
    return child;
}

void WriteAttributes(pugi::xml_node root, const SessionRecord& session, pugi::xml_node attributes) {
    for (const auto& [name, value] : session.attributes) {
        if (!attributes) attributes = root.append_child("Attributes");
        const pugi::xml_node node = AttributeElement(attributes, name);
        if (ReadAttribute(node) == value && node.first_attribute().next_attribute()) continue;
        const auto* number = std::get_if<std::int32_t>(&value);
        SetValue(node, kTypeNames, number != nullptr ? "dword" : "string");
        Put(node, "Value",
            number != nullptr ? fmt::to_string(*number) : std::get<std::string>(value));
    }
}

void WriteSessionProfile(pugi::xml_node group, pugi::xml_node node, const ProfileRecord& profile) {
    if (!node) node = group.append_child("Profile");
    node.remove_children();
    for (pugi::xml_attribute attribute = node.first_attribute(); attribute;) {
        const pugi::xml_attribute next = attribute.next_attribute();
        if (IsOneOf(attribute.name(), kProfileFileNames)) node.remove_attribute(attribute);
        attribute = next;
    }
    Put(node, "Name", profile.name);
    node.append_child(pugi::node_cdata).set_value(("\n" + WriteProfile(profile)).c_str());
}

void WriteOutputs(SessionParts& parts, const SessionRecord& session, const SessionFolder& folder) {
    const auto need = [&](pugi::xml_node& node, const char* name) {
        if (!node) node = NeedChild(parts.root, "Output").append_child(name);
        return node;
    };
    if (!session.output.empty() || parts.file) {
        const pugi::xml_node file = need(parts.file, "File");
        const std::string there = ValueOf(file, kOutputFileNames);
        if (there.empty() || folder.ResolveOutput(there) != session.output)
            SetValue(file, kOutputFileNames, folder.NameForOutput(session.output));
    }
    const BroadcastRecord& network = session.broadcast;
    if (network.http_port != 0 || parts.broadcast) {
        const pugi::xml_node broadcast = need(parts.broadcast, "Broadcast");
        if (!broadcast.first_attribute() && !broadcast.first_child())
            Put(broadcast, "Protocol", "http");
        if (ParseNumber(ValueOf(broadcast, kPortNames)) != network.http_port)
            SetValue(broadcast, kPortNames, fmt::to_string(network.http_port));
    }
    if (!network.server.empty() || parts.push) {
        const pugi::xml_node push = need(parts.push, "Push");
        SetValue(push, kServerNames, network.server);
        SetValue(push, kPointNames, network.publishing_point);
        SetValue(push, kTemplateNames, network.template_name);
    }
}

void WriteDisplay(SessionParts& parts, const ContentDescription& content) {
    for (const DisplayRow& row : kDisplay) {
        const std::string& text = content.*(row.text);
        const std::string_view names[] = {row.name};
        const pugi::xml_node holder = DisplayHolder(parts.display, names);
        if (ValueOf(holder, names) == text) continue;
        if (HasValue(holder, names)) {
            SetValue(holder, names, text);
            continue;
        }
        if (!parts.display) parts.display = parts.root.append_child("DisplayInfo");
        parts.display.append_child(row.name).text().set(text.c_str());
    }
}

void WriteOptions(SessionParts& parts, const SessionRecord& session) {
    if (!parts.options) parts.options = parts.root.append_child("Options");
    if (IsTrue(ValueOf(parts.options, kAutoStop)) != session.auto_stop)
        SetValue(parts.options, kAutoStop, session.auto_stop ? "1" : "0");
    const std::int32_t usual = SessionRecord().video_performance;
    const std::string there = ValueOf(parts.options, kPerformance);
    if (ParseNumber(there).value_or(usual) != session.video_performance)
        SetValue(parts.options, kPerformance, fmt::to_string(session.video_performance));
}

void MakeDocument(pugi::xml_document& document) {
    document.append_child(pugi::node_declaration).append_attribute("version").set_value("1.0");
    pugi::xml_node root = document.append_child("EncoderSession");
    Put(root, "major_version", "9");
    Put(root, "minor_version", "0");
    Put(root, "Name", "");
    root.append_child("Description");
    root.append_child("SourceGroups").append_child("SourceGroup");
}

}  // namespace

SessionFile ReadSession(const std::string& utf8, const SessionFolder& folder) {
    pugi::xml_document document;
    ParseXml(utf8, document);
    const SessionParts parts(document);
    if (!parts.group) Refuse("it is no session: it has no source group");

    SessionFile file;
    SessionRecord& session = file.session;
    session.groups.push_back(ReadGroup(parts, folder, file.notes));
    const std::string output = ValueOf(parts.file, kOutputFileNames);
    if (!output.empty()) session.output = folder.ResolveOutput(output);
    session.broadcast = {
        ReadNumber(ValueOf(parts.broadcast, kPortNames), ranges::kPortNumber, 0, file.notes),
        ValueOf(parts.push, kServerNames), ValueOf(parts.push, kPointNames),
        ValueOf(parts.push, kTemplateNames)};
    for (const DisplayRow& row : kDisplay) {
        const std::string_view names[] = {row.name};
        session.content.*(row.text) = ValueOf(DisplayHolder(parts.display, names), names);
    }
    int unknown = CountUnknown(parts.root);
    ReadAttributes(parts.attributes, session, unknown);
    session.auto_stop = IsTrue(ValueOf(parts.options, kAutoStop));
    session.video_performance =
        ReadNumber(ValueOf(parts.options, kPerformance), ranges::kVideoPerformance,
                   session.video_performance, file.notes);
    if (unknown > 0)
        file.notes.push_back(
            fmt::format("{} parts of the session were not understood; they are kept.", unknown));
    file.text = std::make_shared<const std::string>(utf8);
    return file;
}

std::string WriteSession(const SessionRecord& session, const SessionFolder& folder,
                         const std::string* loaded) {
    if (session.groups.empty() || !session.groups.front().profile)
        RefuseArgument("The session cannot be saved: it has no source group with a profile");
    const SourceGroupRecord& group = session.groups.front();
    pugi::xml_document document;
    if (loaded != nullptr)
        ParseXml(*loaded, document);
    else
        MakeDocument(document);
    SessionParts parts(document);
    SetValue(parts.group, kNameNames, group.name);
    if (!group.audio.empty()) WriteAudioSource(parts.group, group.audio.front(), folder);
    if (!group.video.empty()) WriteVideoSource(parts.group, group.video.front(), folder);
    WriteSessionProfile(parts.group, parts.profile, *group.profile);
    WriteOutputs(parts, session, folder);
    WriteDisplay(parts, session.content);
    WriteAttributes(parts.root, session, parts.attributes);
    WriteOptions(parts, session);
    return XmlText(document);
}

}  // namespace engine::files
