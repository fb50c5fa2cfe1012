#include "engine/files/audio_stream.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "engine/files/media_subtype.h"
#include "engine/files/stream_config.h"
#include "engine/files/xml_tree.h"
#include "engine/plan/audio_stream_format.h"
#include "engine/plan/value_ranges.h"
#include "platform/error.h"

namespace engine::files {

namespace {

using platform::VbrMode;

constexpr std::uint32_t kWavePcmTag = 1;             // uncompressed, as files know it
constexpr std::int64_t kQualityBytes = 0x7FFF'FF00;  // plus the quality stands for bytes a second
constexpr std::int32_t kUsualBufferMs = 3000;
constexpr std::int32_t kUsualDepth = 16;

// clang-format off
constexpr OwnAttribute<AudioStream> kOwn[] = {
    // name            range             value
    {"x-vbrmode",      kModeRange,       [](const AudioStream& a) { return static_cast<std::int64_t>(a.mode); },
                                         [](AudioStream& a, std::int32_t v) { a.mode = static_cast<VbrMode>(v); }},
    {"x-bitrate",      ranges::kAudioBitrate,
                                         [](const AudioStream& a) { return std::int64_t{a.settings.format.value}; },
                                         [](AudioStream& a, std::int32_t v) { a.settings.format.value = v; }},
    {"x-peakbitrate",  kPeakRateRange,   [](const AudioStream& a) { return std::int64_t{a.settings.peak_rate_bps.value_or(-1)}; },
                                         [](AudioStream& a, std::int32_t v) { a.settings.peak_rate_bps = v; }},
    {"x-peakbuffer",   kPeakBufferRange, [](const AudioStream& a) { return std::int64_t{a.settings.peak_buffer_ms}; },
                                         [](AudioStream& a, std::int32_t v) { a.settings.peak_buffer_ms = v; }},
};
// clang-format on

std::int32_t ReadCodec(const pugi::xml_node& media, std::int64_t tag, const ValueReader& reader) {
    const char* const subtype = AttributeNamed(media, "subtype").value();
    const std::int64_t code = tag != 0 ? tag : SubtypeCode(subtype).value_or(0);
    const platform::AudioCodecRow* const row =
        code <= 0 || code > 0xFFFF
            ? nullptr
            : platform::FindAudioCodec(static_cast<std::uint32_t>(code == kWavePcmTag ? 0 : code));
    if (row != nullptr) return static_cast<std::int32_t>(row - platform::kAudioCodecs.data());
    reader.Refuse(
        platform::kNotImplemented,
        fmt::format("the audio codec 0x{:X} (subtype {}) is not encoded by this program: choose "
                    "among {}",
                    code, subtype, fmt::join(platform::kAudioCodecNames, ", ")));
}

std::int32_t NeedNumber(const pugi::xml_node& format, const char* name, const ValueRange& range,
                        const ValueReader& reader) {
    const auto number = reader.Find(format, name);
    if (!number) reader.Refuse(platform::kInvalidData, fmt::format("its {} is missing", name));
    return reader.Clamped(range, *number);
}

AudioStream ReadKnown(const pugi::xml_node& stream, const ValueReader& reader) {
    const pugi::xml_node wave = NeedFormat(stream, "waveformatex", reader);
    AudioStream audio;
    AudioSettings& settings = audio.settings;
    settings.codec = ReadCodec(wave.parent(), reader.Number(wave, "wFormatTag"), reader);

    RateControl control = ReadRateControl(stream, reader);
    const std::int64_t bytes = reader.Number(wave, "nAvgBytesPerSec");
    if (bytes > kQualityBytes && control.mode != VbrMode::Peak) {
        control.mode = VbrMode::Quality;
        if (control.quality == 0)
            control.quality = reader.Clamped(ranges::kVideoQuality, bytes - kQualityBytes);
    }
    audio.mode = control.mode;
    settings.peak_rate_bps = control.peak_rate_bps;
    settings.peak_buffer_ms = control.peak_buffer_ms;

    const std::int64_t rate = reader.Number(stream, "bitrate");
    settings.format.value =
        control.mode == VbrMode::Quality
            ? control.quality
            : reader.Clamped(ranges::kAudioBitrate,
                             rate != 0 ? rate : std::min(bytes, kQualityBytes) * 8);
    settings.format.sampling_rate =
        NeedNumber(wave, "nSamplesPerSec", ranges::kSamplingRate, reader);
    settings.format.channels = NeedNumber(wave, "nChannels", ranges::kChannels, reader);
    const std::int64_t depth = reader.Number(wave, "wBitsPerSample");
    settings.format.bits_per_sample =
        reader.Clamped(ranges::kBitsPerSample, depth != 0 ? depth : kUsualDepth);
    return audio;
}

/// As the program writes it; none for a format that the codec does not have.
AudioStreamFormat FileFormat(const AudioSettings& settings, VbrMode mode) {
    const platform::AudioCodecRow& codec =
        platform::kAudioCodecs[static_cast<std::size_t>(settings.codec)];
    const auto format = FindAudioFormat(codec, mode, settings.format);
    return format ? StreamFormatOf(WrittenFor(codec, mode, *format), mode) : AudioStreamFormat();
}

void WriteFormat(pugi::xml_node media, const AudioSettings& settings, VbrMode mode) {
    const AudioFormat& format = settings.format;
    const std::uint16_t codec =
        platform::kAudioCodecs[static_cast<std::size_t>(settings.codec)].tag;
    const std::uint32_t tag = codec != 0 ? codec : kWavePcmTag;
    const AudioStreamFormat stream = FileFormat(settings, mode);
    Put(media, "subtype", SubtypeText(tag));
    PutNumber(media, "bfixedsizesamples", 1);
    PutNumber(media, "btemporalcompression", 0);
    PutNumber(media, "lsamplesize", stream.block_align);
    pugi::xml_node wave = NeedChild(media, "waveformatex");
    PutNumber(wave, "wFormatTag", tag);
    PutNumber(wave, "nChannels", format.channels);
    PutNumber(wave, "nSamplesPerSec", format.sampling_rate);
    PutNumber(wave, "nAvgBytesPerSec",
              mode == VbrMode::Quality ? kQualityBytes + format.value : format.value / 8);
    PutNumber(wave, "nBlockAlign", stream.block_align);
    PutNumber(wave, "wBitsPerSample", format.bits_per_sample);
    Put(wave, "codecdata", fmt::format("{:02X}", fmt::join(stream.extra_data, "")));
}

}  // namespace

AudioStream ReadAudioStream(const pugi::xml_node& stream, const ValueReader& reader) {
    AudioStream audio = ReadKnown(stream, reader);
    ReadOwn<AudioStream>(stream, reader, kOwn, audio);
    return audio;
}

void WriteAudioStream(pugi::xml_node stream, const AudioStream& audio) {
    const AudioSettings& settings = audio.settings;
    const AudioFormat& format = settings.format;
    const bool quality = audio.mode == VbrMode::Quality;
    const std::optional<AudioStream> loaded = ReadLoaded(stream, ReadKnown);
    const bool as_loaded = loaded && loaded->mode == audio.mode &&
                           loaded->settings.codec == settings.codec &&
                           loaded->settings.format == format;
    StreamSettings common{
        StreamKind::Audio,
        {},
        {},
        {},
        {audio.mode, quality ? format.value : 0, settings.peak_rate_bps, settings.peak_buffer_ms}};
    if (!as_loaded) {
        common.bit_rate_bps = quality ? 0 : format.value;
        common.buffer_ms = quality ? 0 : kUsualBufferMs;
    }
    WriteStream(stream, common);
    if (!as_loaded) WriteFormat(NeedChild(stream, "wmmediatype"), settings, audio.mode);
    WriteOwn<AudioStream>(stream, kOwn, audio, *ReadLoaded(stream, ReadKnown));
}

}  // namespace engine::files
