#include "engine/files/session_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "engine/files/session_names.h"
#include "engine/files/xml_tree.h"
#include "engine/files/xml_values.h"
#include "engine/plan/value_ranges.h"
#include "platform/error.h"
#include "platform/pixel_format_table.h"
#include "platform/text.h"

namespace engine::files {

namespace {

using platform::SourceType;

constexpr std::string_view kPropertyName = "Property";
constexpr std::string_view kRegion = "Region";  // left, top, right and lower edge
constexpr std::string_view kArea = "Area";      // any other part of a screen
constexpr std::string_view kContentEdl[] = {"ContentEDL"};
constexpr std::string_view kPixelFormat[] = {"PixelFormat"};

// As files spell them, and as the tree does.
struct Scheme {
    std::string_view written;
    std::string_view scheme;
};
constexpr Scheme kSchemes[] = {{"File", ""}, {"Device", "device"}, {"ScreenCap", "screencap"}};

template <typename Record>
struct NumberRow {
    std::array<std::string_view, 2> names;
    ValueRange range;
    std::int32_t Record::*field;
};

// clang-format off
constexpr NumberRow<SourceRecord> kSourceNumbers[] = {
    {{"MarkIn"},         ranges::kMarkIn,         &SourceRecord::mark_in_ms},
    {{"MarkOut"},        ranges::kMarkOut,        &SourceRecord::mark_out_ms},
    {{"PreProcessPass"}, ranges::kPreProcessPass, &SourceRecord::pre_process_pass},
};
constexpr NumberRow<AudioSourceRecord> kAudioNumbers[] = {
    {{"ContentMode"},    ranges::kContentMode,    &AudioSourceRecord::content_mode},
};
constexpr NumberRow<VideoSourceRecord> kVideoNumbers[] = {
    {{"Optimization"},                           ranges::kOptimization,         &VideoSourceRecord::optimization},
    {{"PixelAspectRatioX"},                      ranges::kPixelAspectRatioX,    &VideoSourceRecord::pixel_aspect_x},
    {{"PixelAspectRatioY"},                      ranges::kPixelAspectRatioY,    &VideoSourceRecord::pixel_aspect_y},
    {{"CroppingLeft", "CroppingLeftMargin"},     ranges::kCroppingLeftMargin,   &VideoSourceRecord::left_margin},
    {{"CroppingTop", "CroppingTopMargin"},       ranges::kCroppingTopMargin,    &VideoSourceRecord::top_margin},
    {{"CroppingRight", "CroppingRightMargin"},   ranges::kCroppingRightMargin,  &VideoSourceRecord::right_margin},
    {{"CroppingBottom", "CroppingBottomMargin"}, ranges::kCroppingBottomMargin, &VideoSourceRecord::bottom_margin},
};
// In elements of their own, for the schemes that have them.
constexpr NumberRow<VideoSourceRecord> kVideoProperties[] = {
    {{"CaptureRate"},    ranges::kCaptureRate,    &VideoSourceRecord::capture_rate},
    {{"StillDuration"},  ranges::kStillDuration,  &VideoSourceRecord::still_duration_ms},
};
// clang-format on

std::string Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(kBlanks) - first + 1));
}

std::optional<SourceType> TypeOf(const pugi::xml_node& node) {
    const auto has = [](const std::string& text, const char* word) {
        return text.find(word) != std::string::npos;
    };
    const std::string type = platform::LowerCase(Trimmed(ValueOf(node, kTypeNames)));
    if (type == "1" || type == "audio") return SourceType::Audio;
    if (type == "2" || type == "video") return SourceType::Video;
    if (!type.empty()) return std::nullopt;
    const std::string name = platform::LowerCase(node.name());
    if (has(name, "audio")) return SourceType::Audio;
    return has(name, "video") ? std::optional(SourceType::Video) : std::nullopt;
}

pugi::xml_node PropertyOf(const pugi::xml_node& source, std::string_view name) {
    return source.find_child([&](const pugi::xml_node& child) {
        return IsNamed(child.name(), kPropertyName) &&
               IsNamed(AttributeNamed(child, "Name").value(), name);
    });
}

std::string PropertyText(const pugi::xml_node& source, std::string_view name) {
    return AttributeNamed(PropertyOf(source, name), "Value").value();
}

void SetProperty(pugi::xml_node source, std::string_view name, const std::string& value) {
    pugi::xml_node property = PropertyOf(source, name);
    if (value.empty()) {
        while (source.remove_child(PropertyOf(source, name))) {
        }
        return;
    }
    if (!property) {
        property = source.append_child(std::string(kPropertyName).c_str());
        Put(property, "Name", std::string(name));
    }
    Put(property, "Value", value);
}

/// 0 stands for not set where the range does not have it.
template <typename Record, typename Row>
void TakeNumber(const std::string& text, const Row& row, const ValueReader& reader,
                Record& record) {
    if (text.empty()) return;
    const auto number = ParseNumber(text);
    if (!number)
        reader.Refuse(platform::kInvalidData,
                      fmt::format("{}=\"{}\" is no number", row.names.front(), text));
    if (*number != record.*(row.field)) record.*(row.field) = reader.Clamped(row.range, *number);
}

Names NamesOf(const std::array<std::string_view, 2>& names) {
    return Names(names).first(names.back().empty() ? 1 : 2);
}

template <typename Record, typename Rows>
void ReadNumbers(const pugi::xml_node& node, const Rows& rows, const ValueReader& reader,
                 Record& record) {
    for (const auto& row : rows) TakeNumber(ValueOf(node, NamesOf(row.names)), row, reader, record);
}

/// What is as nobody set it is not written, unless the file says something else.
template <typename Record, typename Rows>
void WriteNumbers(pugi::xml_node node, const Rows& rows, const Record& record) {
    const Record unset;
    for (const auto& row : rows) {
        const std::int32_t value = record.*(row.field);
        const std::string text = ValueOf(node, NamesOf(row.names));
        if (text.empty() ? value != unset.*(row.field) : ParseNumber(text) != value)
            SetValue(node, NamesOf(row.names), fmt::to_string(value));
    }
}

std::string RegionText(const PixelBox& box) {
    return fmt::format("{},{},{},{}", box.x, box.y, box.x + box.width, box.y + box.height);
}

/// The part of a screen in the words that choose it; "" for all of it.
std::string ReadArea(const pugi::xml_node& node, const ValueReader& reader) {
    const std::string region = PropertyText(node, kRegion);
    if (region.empty()) return PropertyText(node, kArea);
    std::vector<std::int64_t> edges;
    for (const std::string& edge : platform::Split(region, ','))
        if (const auto number = ParseNumber(edge)) edges.push_back(*number);
    if (edges.size() != 4)
        reader.Refuse(platform::kInvalidData,
                      fmt::format("{}=\"{}\" is no rectangle", kRegion, region));
    return fmt::format("region:{}x{}+{}+{}", edges[2] - edges[0], edges[3] - edges[1], edges[0],
                       edges[1]);
}

SourceInput ReadInput(const pugi::xml_node& node, const SessionFolder& folder,
                      const ValueReader& reader) {
    std::string name = ValueOf(node, kInputNames);
    if (name.empty()) name = Trimmed(TextIn(node));
    std::string scheme = platform::LowerCase(ValueOf(node, kSchemeNames));
    const std::size_t colon = name.find("://");
    const bool has_prefix = colon != std::string::npos && colon > 1;
    const std::string prefix =
        has_prefix ? platform::LowerCase(name.substr(0, colon)) : std::string();
    if (has_prefix && (scheme.empty() || scheme == prefix)) {
        scheme = prefix;
        const bool is_uri = prefix == "file" && platform::StartsWith(name.substr(colon), ":///");
        name = is_uri ? prefix + name.substr(colon) : name.substr(colon + 3);
    }
    if (scheme.empty()) scheme = "file";
    const auto known = std::ranges::find_if(
        kSchemes, [&](const Scheme& row) { return scheme == platform::LowerCase(row.written); });
    if (known == std::end(kSchemes))
        reader.Refuse(platform::kNotImplemented,
                      fmt::format("sources of the scheme {} are not read", scheme));
    SourceInput input;
    input.scheme = known->scheme;
    input.input = name.empty() || !input.scheme.empty() ? name : folder.Resolve(name);
    if (input.scheme == "screencap") input.area = ReadArea(node, reader);
    return input;
}

/// The part of the screen that a source records, in the words that choose it.
std::string AreaText(const SourceInput& input) {
    if (input.scheme != "screencap" || !input.capture) return input.area;
    const ScreenArea& area = input.capture->area;
    switch (area.kind) {
        case ScreenArea::Kind::Region:
            return fmt::format("region:{}x{}+{}+{}", area.region.width, area.region.height,
                               area.region.x, area.region.y);
        case ScreenArea::Kind::Monitor:
            return fmt::format("monitor:{}", area.monitor);
        case ScreenArea::Kind::Window:
            return "window:" + area.name;
        case ScreenArea::Kind::Screen:
            break;
    }
    return {};
}

void WriteInput(pugi::xml_node node, const SourceInput& input, const SessionFolder& folder,
                const ValueReader& reader) {
    const SourceInput there = ReadInput(node, folder, reader);
    if (there.scheme != input.scheme || there.input != input.input) {
        const auto scheme = std::ranges::find(kSchemes, input.scheme, &Scheme::scheme);
        SetValue(node, kSchemeNames, std::string(scheme->written));
        SetValue(node, kInputNames,
                 input.scheme.empty() && input.IsSet() ? folder.NameFor(input.input) : input.input);
    }
    const std::string area = AreaText(input);
    if (there.area == area) return;
    const bool is_region = input.capture && input.capture->area.kind == ScreenArea::Kind::Region;
    SetProperty(node, kRegion, is_region ? RegionText(input.capture->area.region) : "");
    SetProperty(node, kArea, is_region ? "" : area);
}

const char* PartName(SourceType type) {
    return type == SourceType::Audio ? "the audio source" : "the video source";
}

void AppendSources(const pugi::xml_node& node, std::vector<FoundSource>& found) {
    for (const pugi::xml_node& child : node.children()) {
        if (child.type() != pugi::node_element || IsOneOf(child.name(), kProfileNames)) continue;
        if (IsOneOf(child.name(), kSourceNames) || !ValueOf(child, kInputNames).empty())
            found.push_back({child, TypeOf(child)});
        else
            AppendSources(child, found);
    }
}

pugi::xml_node NeedSource(pugi::xml_node group, SourceType type) {
    for (const FoundSource& found : FindSources(group))
        if (found.type == type) return found.node;
    const pugi::xml_node profile = Descendant(group, kProfileNames);
    pugi::xml_node node = profile && profile.parent() == group
                              ? group.insert_child_before("Source", profile)
                              : group.append_child("Source");
    Put(node, "Type", type == SourceType::Audio ? "audio" : "video");
    return node;
}

/// What sources of both kinds have.
template <typename Record, typename Rows>
Record ReadSource(const pugi::xml_node& node, const Rows& rows, const SessionFolder& folder,
                  const ValueReader& reader) {
    Record source;
    source.input = ReadInput(node, folder, reader);
    ReadNumbers<SourceRecord>(node, kSourceNumbers, reader, source);
    ReadNumbers(node, rows, reader, source);
    return source;
}

template <typename Record, typename Rows>
pugi::xml_node WriteSource(pugi::xml_node group, SourceType type, const Rows& rows,
                           const Record& source, const SessionFolder& folder) {
    const pugi::xml_node node = NeedSource(group, type);
    std::vector<std::string> notes;
    WriteInput(node, source.input, folder, ValueReader(PartName(type), notes));
    WriteNumbers<SourceRecord>(node, kSourceNumbers, source);
    WriteNumbers(node, rows, source);
    return node;
}

}  // namespace

std::vector<FoundSource> FindSources(const pugi::xml_node& group) {
    std::vector<FoundSource> found;
    AppendSources(group, found);
    return found;
}

AudioSourceRecord ReadAudioSource(const pugi::xml_node& node, const SessionFolder& folder,
                                  std::vector<std::string>& notes) {
    const ValueReader reader(PartName(SourceType::Audio), notes);
    auto source = ReadSource<AudioSourceRecord>(node, kAudioNumbers, folder, reader);
    source.content_edl = ValueOf(node, kContentEdl);
    return source;
}

VideoSourceRecord ReadVideoSource(const pugi::xml_node& node, const SessionFolder& folder,
                                  std::vector<std::string>& notes) {
    const ValueReader reader(PartName(SourceType::Video), notes);
    auto source = ReadSource<VideoSourceRecord>(node, kVideoNumbers, folder, reader);
    for (const auto& row : kVideoProperties)
        TakeNumber(PropertyText(node, row.names.front()), row, reader, source);
    const std::string format = ValueOf(node, kPixelFormat);
    if (const auto* known = platform::FindPixelFormat(std::string_view(format))) {
        source.pixel_format = known->code;
    } else if (!format.empty()) {
        const auto number = ParseNumber(format);
        if (!number || *number < 0 || *number > 0xFFFF'FFFF)
            reader.Refuse(platform::kInvalidData, fmt::format("\"{}\" is no pixel format", format));
        source.pixel_format = static_cast<std::uint32_t>(*number);
    }
    return source;
}

void WriteAudioSource(pugi::xml_node group, const AudioSourceRecord& source,
                      const SessionFolder& folder) {
    SetValue(WriteSource(group, SourceType::Audio, kAudioNumbers, source, folder), kContentEdl,
             source.content_edl);
}

void WriteVideoSource(pugi::xml_node group, const VideoSourceRecord& source,
                      const SessionFolder& folder) {
    const pugi::xml_node node =
        WriteSource(group, SourceType::Video, kVideoNumbers, source, folder);
    const VideoSourceRecord unset;
    for (const auto& row : kVideoProperties) {
        const std::int32_t value = source.*(row.field);
        const std::string text = PropertyText(node, row.names.front());
        if (text.empty() ? value != unset.*(row.field) : ParseNumber(text) != value)
            SetProperty(node, row.names.front(), fmt::to_string(value));
    }
    std::vector<std::string> notes;
    const VideoSourceRecord there = ReadVideoSource(node, folder, notes);
    if (there.pixel_format != source.pixel_format)
        SetValue(node, kPixelFormat, fmt::to_string(source.pixel_format));
}

}  // namespace engine::files
