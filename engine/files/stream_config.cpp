#include "engine/files/stream_config.h"

#include <fmt/format.h>

#include <string_view>

#include "engine/files/media_subtype.h"
#include "engine/files/xml_tree.h"
#include "engine/plan/value_ranges.h"
#include "platform/error.h"

namespace engine::files {

namespace {

using platform::VbrMode;

constexpr std::int64_t kUnknownBuffer = 4'294'967'295;  // -1 as 32 bits

void PutMissing(pugi::xml_node node, const char* name, const char* value) {
    if (!AttributeNamed(node, name)) node.append_attribute(name).set_value(value);
}

void PutOrLeave(pugi::xml_node node, const char* name, std::optional<std::int32_t> value) {
    if (value)
        PutNumber(node, name, *value);
    else
        PutMissing(node, name, "0");
}

}  // namespace

StreamKind KindOf(const pugi::xml_node& stream) {
    const std::string_view type = AttributeNamed(stream, "majortype").value();
    if (type.empty()) {
        const pugi::xml_node media = ChildNamed(stream, "wmmediatype");
        if (ChildNamed(media, "waveformatex")) return StreamKind::Audio;
        return ChildNamed(media, "videoinfoheader") ? StreamKind::Video : StreamKind::Other;
    }
    const std::optional<std::uint32_t> code = SubtypeCode(type);
    if (code == kAudioType) return StreamKind::Audio;
    if (code == kVideoType) return StreamKind::Video;
    return code == kScriptType ? StreamKind::Script : StreamKind::Other;
}

const char* Word(StreamKind kind) {
    switch (kind) {
        case StreamKind::Audio:
            return "audio";
        case StreamKind::Video:
            return "video";
        case StreamKind::Script:
            return "script";
        case StreamKind::Other:
            break;
    }
    return "other data";
}

std::string StreamName(const pugi::xml_node& stream) {
    const std::string number = AttributeNamed(stream, "streamnumber").value();
    return number.empty() ? "a stream without number" : "stream " + number;
}

RateControl ReadRateControl(const pugi::xml_node& stream, const ValueReader& reader) {
    if (reader.Number(stream, "vbrenabled") == 0) return {};
    RateControl control;
    const std::int64_t peak = reader.Number(stream, "bitratemax");
    const std::int64_t quality = reader.Number(stream, "vbrquality");
    if (peak > 0) {
        control.mode = VbrMode::Peak;
        control.peak_rate_bps = reader.Clamped(kPeakRateRange, peak);
        control.peak_buffer_ms =
            reader.Clamped(kPeakBufferRange, reader.Number(stream, "bufferwindowmax"));
    } else if (quality != 0) {
        control.mode = VbrMode::Quality;
        control.quality = reader.Clamped(ranges::kVideoQuality, quality);
    } else {
        control.mode = VbrMode::BitRate;
    }
    return control;
}

void WriteStream(pugi::xml_node stream, const StreamSettings& settings) {
    const bool is_audio = settings.kind == StreamKind::Audio;
    const RateControl& control = settings.control;
    const bool has_peak = control.mode == VbrMode::Peak;
    PutMissing(stream, "streamname", is_audio ? "Audio Stream" : "Video Stream");
    PutMissing(stream, "inputname", is_audio ? "Audio409" : "Video409");
    PutOrLeave(stream, "bitrate", settings.bit_rate_bps);
    PutOrLeave(stream, "bufferwindow", settings.buffer_ms);
    PutMissing(stream, "reliabletransport", "0");
    if (settings.complexity)
        Put(stream, "decodercomplexity", *settings.complexity);
    else
        PutMissing(stream, "decodercomplexity", "");
    PutMissing(stream, "rfc1766langid", "en-us");
    PutNumber(stream, "vbrenabled", control.mode == VbrMode::Constant ? 0 : 1);
    PutNumber(stream, "vbrquality", control.mode == VbrMode::Quality ? control.quality : 0);
    PutNumber(stream, "bitratemax", has_peak ? control.peak_rate_bps.value_or(0) : 0);
    PutNumber(stream, "bufferwindowmax", has_peak ? control.peak_buffer_ms : 0);
}

pugi::xml_node NeedFormat(const pugi::xml_node& stream, const char* name,
                          const ValueReader& reader) {
    const pugi::xml_node media = ChildNamed(stream, "wmmediatype");
    const pugi::xml_node format = ChildNamed(media, name);
    if (!format)
        reader.Refuse(platform::kInvalidData,
                      fmt::format("it has no {} with the subtype {}", name,
                                  AttributeNamed(media, "subtype").as_string("(missing)")));
    return format;
}

std::optional<std::int64_t> BufferAsked(const pugi::xml_node& stream, const ValueReader& reader) {
    const auto buffer = reader.Find(stream, "bufferwindow");
    return buffer && (*buffer <= 0 || *buffer == kUnknownBuffer) ? std::nullopt : buffer;
}

}  // namespace engine::files
