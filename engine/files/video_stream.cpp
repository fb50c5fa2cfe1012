#include "engine/files/video_stream.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

#include "engine/files/media_subtype.h"
#include "engine/files/stream_config.h"
#include "engine/files/xml_tree.h"
#include "engine/plan/value_ranges.h"
#include "platform/error.h"
#include "platform/pixel_format_table.h"
#include "platform/text.h"

namespace engine::files {

namespace {

using platform::VbrMode;

constexpr std::int64_t kIntervalsASecond = 10'000'000;  // of 100 ns
constexpr std::int64_t kIntervalsAMillisecond = 10'000;
constexpr std::uint32_t kRgb24 = 0xE436EB7D;
constexpr std::int64_t kRgbBits = 24;
constexpr std::int32_t kUsualQuality = 75;
constexpr std::int32_t kUsualBufferMs = 5000;
constexpr std::int64_t kUsualKeyDistance = 10 * kIntervalsASecond;
constexpr const char* kNoConformance = "AU";  // as the codec sees fit
constexpr std::uint32_t kConformingCodec = platform::FourCC("WMV3");

// clang-format off
constexpr ValueRange kBitRateRange = {"x-bitrate", 0, kNoUpperLimit};
constexpr ValueRange kFlag = {"x-nonsquare, x-interlaced", 0, 1};

template <std::int32_t VideoSettings::*field>
constexpr OwnAttribute<VideoStream> Own(const char* name, const ValueRange& range) {
    return {name, range, [](const VideoStream& v) { return std::int64_t{v.settings.*field}; },
            [](VideoStream& v, std::int32_t value) { v.settings.*field = value; }};
}

constexpr OwnAttribute<VideoStream> kOwn[] = {
    // name              range            value
    {"x-vbrmode",        kModeRange,      [](const VideoStream& v) { return static_cast<std::int64_t>(v.mode); },
                                          [](VideoStream& v, std::int32_t value) { v.mode = static_cast<VbrMode>(value); }},
    {"x-peakbitrate",    kPeakRateRange,  [](const VideoStream& v) { return std::int64_t{v.settings.peak_rate_bps.value_or(-1)}; },
                                          [](VideoStream& v, std::int32_t value) { v.settings.peak_rate_bps = value; }},
    {"x-nonsquare",      kFlag,           [](const VideoStream& v) { return std::int64_t{v.non_square_pixels ? 1 : 0}; },
                                          [](VideoStream& v, std::int32_t value) { v.non_square_pixels = value != 0; }},
    {"x-interlaced",     kFlag,           [](const VideoStream& v) { return std::int64_t{v.interlaced ? 1 : 0}; },
                                          [](VideoStream& v, std::int32_t value) { v.interlaced = value != 0; }},
    Own<&VideoSettings::peak_buffer_ms>("x-peakbuffer", kPeakBufferRange),
    Own<&VideoSettings::bit_rate_bps>  ("x-bitrate",    kBitRateRange),
    Own<&VideoSettings::frame_rate>    ("x-framerate",  ranges::kVideoFps),
    Own<&VideoSettings::buffer_ms>     ("x-buffer",     ranges::kVideoBufferSize),
    Own<&VideoSettings::sharpness>     ("x-sharpness",  ranges::kVideoImageSharpness),
    Own<&VideoSettings::quality>       ("x-quality",    ranges::kVideoQuality),
};
// clang-format on

/// Both ways: thousandths of a frame per second, and the time of a frame.
std::int64_t Reciprocal(std::int64_t value) {
    return std::llround(1000.0 * static_cast<double>(kIntervalsASecond) /
                        static_cast<double>(value));
}

const platform::VideoCodecRow* RowOf(std::uint32_t code) {
    if (code == 0 || platform::FindPixelFormat(code) != nullptr)
        return platform::FindVideoCodec(std::uint32_t{0});
    return platform::FindVideoCodec(code);
}

/// The format's code: letters, or a number where frames are not compressed.
std::optional<std::uint32_t> Compression(const pugi::xml_node& bitmap) {
    const std::string text = platform::TrimBlanks(AttributeNamed(bitmap, "bicompression").value());
    if (text.empty()) return std::nullopt;
    if (ParseNumber(text) == 0 || platform::UpperCase(text) == "RGB") return 0;
    return CodeOfLetters(text);
}

std::int32_t ReadCodec(const pugi::xml_node& media, const pugi::xml_node& bitmap,
                       const ValueReader& reader) {
    const char* const subtype = AttributeNamed(media, "subtype").value();
    const std::optional<std::uint32_t> compression = Compression(bitmap);
    const std::optional<std::uint32_t> code = compression ? compression : SubtypeCode(subtype);
    const platform::VideoCodecRow* const row = code ? RowOf(*code) : nullptr;
    if (row != nullptr) return static_cast<std::int32_t>(row - platform::kVideoCodecs.data());
    reader.Refuse(
        platform::kNotImplemented,
        fmt::format("the video codec {} (subtype {}) is not encoded by this program: choose among "
                    "{}",
                    code ? CodeName(*code) : "of its format", subtype,
                    fmt::join(platform::kVideoCodecNames, ", ")));
}

std::uint32_t FourCcOf(const VideoSettings& settings) {
    return platform::kVideoCodecs[static_cast<std::size_t>(settings.codec)].four_cc;
}

std::int64_t FirstSet(std::int64_t first, std::int64_t second) {
    return first != 0 ? first : second;
}

VideoStream ReadKnown(const pugi::xml_node& stream, const ValueReader& reader) {
    const pugi::xml_node header = NeedFormat(stream, "videoinfoheader", reader);
    const pugi::xml_node bitmap = ChildNamed(header, "bitmapinfoheader");
    const pugi::xml_node target = ChildNamed(header, "rctarget");
    const pugi::xml_node properties = ChildNamed(stream, "videomediaprops");
    VideoStream video;
    VideoSettings& settings = video.settings;
    settings.codec = ReadCodec(header.parent(), bitmap, reader);

    const RateControl control = ReadRateControl(stream, reader);
    video.mode = control.mode;
    settings.peak_rate_bps = control.peak_rate_bps;
    settings.peak_buffer_ms = control.peak_buffer_ms;
    const std::int64_t rate =
        FirstSet(reader.Number(stream, "bitrate"), reader.Number(header, "dwbitrate"));
    if (rate != 0) settings.bit_rate_bps = reader.Clamped(ranges::kVideoBitrate, rate);
    settings.buffer_ms = reader.Clamped(ranges::kVideoBufferSize,
                                        BufferAsked(stream, reader).value_or(kUsualBufferMs));

    settings.width =
        reader.Clamped(ranges::kVideoWidth,
                       FirstSet(reader.Number(bitmap, "biwidth"),
                                reader.Number(target, "right") - reader.Number(target, "left")));
    // A negative height is that of rows which stand from the top down.
    settings.height = reader.Clamped(
        ranges::kVideoHeight,
        std::abs(FirstSet(reader.Number(bitmap, "biheight"),
                          reader.Number(target, "bottom") - reader.Number(target, "top"))));
    // No time of a frame asks for the source's own rate, which is what no ceiling leaves.
    const std::int64_t interval = reader.Number(header, "avgtimeperframe");
    settings.frame_rate = interval <= 0 ? ranges::kVideoFps.most
                                        : reader.Clamped(ranges::kVideoFps, Reciprocal(interval));
    settings.key_frame_distance_ms =
        reader.Clamped(ranges::kVideoKeyFrameDistance,
                       reader.Number(properties, "maxkeyframespacing", kUsualKeyDistance) /
                           kIntervalsAMillisecond);
    if (control.mode == VbrMode::Quality)
        settings.quality = control.quality;
    else
        settings.sharpness = reader.Clamped(ranges::kVideoImageSharpness,
                                            reader.Number(properties, "quality", kUsualQuality));

    const std::string complexity =
        platform::UpperCase(AttributeNamed(stream, "decodercomplexity").value());
    if (FourCcOf(settings) == kConformingCodec && complexity != kNoConformance)
        video.conformance = complexity;
    return video;
}

void PutRectangle(pugi::xml_node node, const VideoSettings& settings) {
    PutNumber(node, "left", 0);
    PutNumber(node, "top", 0);
    PutNumber(node, "right", settings.width);
    PutNumber(node, "bottom", settings.height);
}

/// Of uncompressed frames, whose rows are padded to four bytes.
std::int64_t FrameBytes(const VideoSettings& settings, std::int64_t bits_per_pixel) {
    const std::int64_t row_bits = settings.width * std::clamp<std::int64_t>(bits_per_pixel, 1, 64);
    return (row_bits + 31) / 32 * 4 * settings.height;
}

/// @param loaded  what stands there; null where nothing does
void WriteMedia(pugi::xml_node media, const VideoSettings& settings, const VideoSettings* loaded) {
    const auto is_same = [&](auto field) {
        return loaded != nullptr && loaded->*field == settings.*field;
    };
    const bool same_codec = is_same(&VideoSettings::codec);
    const bool same_size = is_same(&VideoSettings::width) && is_same(&VideoSettings::height);
    const std::uint32_t four_cc = FourCcOf(settings);
    const bool compressed = four_cc != 0;
    pugi::xml_node header = NeedChild(media, "videoinfoheader");
    if (!is_same(&VideoSettings::bit_rate_bps))
        PutNumber(header, "dwbitrate", settings.bit_rate_bps);
    if (!is_same(&VideoSettings::frame_rate))
        PutNumber(header, "avgtimeperframe", Reciprocal(settings.frame_rate));
    if (!same_size)
        for (const char* rectangle : {"rcsource", "rctarget"})
            PutRectangle(NeedChild(header, rectangle), settings);
    pugi::xml_node bitmap = NeedChild(header, "bitmapinfoheader");
    const auto there = [&](const char* name) {
        return ParseNumber(AttributeNamed(bitmap, name).value()).value_or(0);
    };
    if (!same_size) {
        const bool top_down = same_codec && there("biheight") < 0;
        PutNumber(bitmap, "biwidth", settings.width);
        PutNumber(bitmap, "biheight", top_down ? -settings.height : settings.height);
    }
    if (!same_codec) {
        Put(media, "subtype", SubtypeText(compressed ? four_cc : kRgb24));
        PutNumber(media, "bfixedsizesamples", compressed ? 0 : 1);
        PutNumber(media, "btemporalcompression", compressed ? 1 : 0);
        PutNumber(header, "dwbiterrorrate", 0);
        PutNumber(bitmap, "biplanes", 1);
        PutNumber(bitmap, "bibitcount", kRgbBits);
        Put(bitmap, "bicompression", compressed ? CodeName(four_cc) : "0");
        for (const char* name :
             {"bixpelspermeter", "biypelspermeter", "biclrused", "biclrimportant"})
            PutNumber(bitmap, name, 0);
    }
    if (!same_codec || !(compressed || same_size)) {
        PutNumber(media, "lsamplesize", compressed ? 0 : FrameBytes(settings, there("bibitcount")));
        PutNumber(bitmap, "bisizeimage", 0);
    }
}

}  // namespace

VideoStream ReadVideoStream(const pugi::xml_node& stream, const ValueReader& reader) {
    VideoStream video = ReadKnown(stream, reader);
    ReadOwn<VideoStream>(stream, reader, kOwn, video);
    return video;
}

void WriteVideoStream(pugi::xml_node stream, const VideoStream& video) {
    const VideoSettings& settings = video.settings;
    const bool quality = video.mode == VbrMode::Quality;
    const std::optional<VideoStream> loaded = ReadLoaded(stream, ReadKnown);
    const VideoSettings* const before = loaded ? &loaded->settings : nullptr;
    const bool same_mode = loaded && loaded->mode == video.mode;
    StreamSettings common{
        StreamKind::Video,
        settings.bit_rate_bps,
        {},
        {},
        {video.mode, settings.quality, settings.peak_rate_bps, settings.peak_buffer_ms}};
    if (!same_mode || before->buffer_ms != settings.buffer_ms)
        common.buffer_ms = quality ? 0 : settings.buffer_ms;
    if (!loaded || loaded->conformance != video.conformance)
        common.complexity = video.conformance.empty() ? kNoConformance : video.conformance;
    WriteStream(stream, common);
    pugi::xml_node properties = NeedChild(stream, "videomediaprops");
    if (!loaded || before->key_frame_distance_ms != settings.key_frame_distance_ms)
        PutNumber(properties, "maxkeyframespacing",
                  settings.key_frame_distance_ms * kIntervalsAMillisecond);
    if (!same_mode || before->sharpness != settings.sharpness)
        PutNumber(properties, "quality", quality ? 0 : settings.sharpness);
    WriteMedia(NeedChild(stream, "wmmediatype"), settings, before);
    WriteOwn<VideoStream>(stream, kOwn, video, *ReadLoaded(stream, ReadKnown));
}

}  // namespace engine::files
