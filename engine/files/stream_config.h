// What the two kinds of streamconfig have in common: which stream it is, and its rate control.
#pragma once

#include <cstdint>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "engine/files/xml_tree.h"
#include "engine/files/xml_values.h"
#include "platform/encoder.h"

namespace engine::files {

enum class StreamKind { Audio, Video, Script, Other };

/// By its major type, or by the format that it has.
StreamKind KindOf(const pugi::xml_node& stream);
const char* Word(StreamKind kind);

/// "stream 2": by its number.
std::string StreamName(const pugi::xml_node& stream);

struct RateControl {
    platform::VbrMode mode = platform::VbrMode::Constant;
    std::int32_t quality = 0;                   // in quality mode
    std::optional<std::int32_t> peak_rate_bps;  // in peak mode
    std::int32_t peak_buffer_ms = 0;            // the same
};

RateControl ReadRateControl(const pugi::xml_node& stream, const ValueReader& reader);

/// What a stream says beside its format. Nothing leaves what a loaded one says as it stands.
struct StreamSettings {
    StreamKind kind;
    std::optional<std::int32_t> bit_rate_bps;
    std::optional<std::int32_t> buffer_ms;
    std::optional<std::string> complexity;  // a device conformance
    RateControl control;
};
void WriteStream(pugi::xml_node stream, const StreamSettings& settings);

/// A format in which `name` is missing cannot be used.
pugi::xml_node NeedFormat(const pugi::xml_node& stream, const char* name,
                          const ValueReader& reader);

/// What `read` makes of a stream that has a format already; nothing for one that was just made.
template <typename Stream>
std::optional<Stream> ReadLoaded(const pugi::xml_node& stream,
                                 Stream (&read)(const pugi::xml_node&, const ValueReader&)) {
    if (!ChildNamed(stream, "wmmediatype")) return std::nullopt;
    std::vector<std::string> notes;
    return read(stream, ValueReader("", notes));
}

inline constexpr ValueRange kModeRange = {"x-vbrmode", 1, 4};
inline constexpr ValueRange kPeakRateRange = {"bitratemax", 0, kNoUpperLimit};
inline constexpr ValueRange kPeakBufferRange = {"bufferwindowmax", 0, kNoUpperLimit};

/// The buffer that "bufferwindow" asks for, in milliseconds; nothing where the writer chooses.
std::optional<std::int64_t> BufferAsked(const pugi::xml_node& stream, const ValueReader& reader);

}  // namespace engine::files
