// A profile and its audience that remember what is set on them, and list the codecs of a test.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/fake_property.h"

namespace test_support {

class FakeAudience : public platform::WMEncAudience {
  public:
    explicit FakeAudience(CallLogPtr shared_log) : log(std::move(shared_log)) {}

    FAKE_STREAM_PROPERTY(std::int32_t, AudioCodec);
    FAKE_STREAM_PROPERTY(std::int32_t, AudioBufferMax);
    FAKE_STREAM_PROPERTY(std::int32_t, AudioPeakBitrate);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoCodec);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoBitrate);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoWidth);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoHeight);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoFPS);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoKeyFrameDistance);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoBufferSize);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoImageSharpness);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoCompressionQuality);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoBufferMax);
    FAKE_STREAM_PROPERTY(std::int32_t, VideoPeakBitrate);

    void SetAudioConfig(int stream, std::int32_t channels, std::int32_t sampling_rate,
                        std::int32_t bit_rate, std::int32_t bits_per_sample) override {
        log->Call("SetAudioConfig", "(" + std::to_string(stream) + ", " + std::to_string(channels) +
                                        ", " + std::to_string(sampling_rate) + ", " +
                                        std::to_string(bit_rate) + ", " +
                                        std::to_string(bits_per_sample) + ")");
        audio_channels = channels;
        audio_sampling_rate = sampling_rate;
        audio_bit_rate = bit_rate;
        audio_bits = bits_per_sample;
    }
    std::int32_t AudioBitrate(int) const override { return audio_bit_rate; }
    std::int32_t AudioChannels(int) const override { return audio_channels; }
    std::int32_t AudioSamplingRate(int) const override { return audio_sampling_rate; }
    std::int32_t AudioBitsPerSample(int) const override { return audio_bits; }
    platform::PropertyValue Property(platform::SourceType, int,
                                     const std::string& name) const override {
        const auto found = properties.find(name);
        return found == properties.end() ? platform::PropertyValue{} : found->second;
    }
    void SetProperty(platform::SourceType type, int stream, const std::string& name,
                     const platform::PropertyValue& value) override {
        const std::string* text = std::get_if<std::string>(&value);
        log->Call("Property", "(" + TypeName(type) + ", " + std::to_string(stream) + ", " + name +
                                  ")=" + (text != nullptr ? *text : "?"));
        properties[name] = value;
    }

    CallLogPtr log;
    std::int32_t audio_channels = 0, audio_sampling_rate = 0, audio_bit_rate = 0, audio_bits = 0;
    std::map<std::string, platform::PropertyValue> properties;
};

/// A codec as a fake profile lists it, with its audio formats (value, Hz, channels, bits).
struct FakeCodec {
    std::uint32_t four_cc;
    std::string name;
    struct Format {
        std::int32_t value, sampling_rate, channels, bits;
    };
    std::map<int, std::vector<Format>> formats;  // by rate-control mode
};

class FakeProfile : public platform::WMEncProfile2 {
  public:
    explicit FakeProfile(CallLogPtr shared_log) : log(std::move(shared_log)) {
        audio_codecs = {{0x161, "Windows Media Audio 9", {}},
                        {0x162, "Windows Media Audio 9 Professional", {}},
                        {0x163, "Windows Media Audio 9 Lossless", {}},
                        {0x00A, "Windows Media Audio 9 Voice", {}},
                        {0, "PCM", {}}};
        video_codecs = {{platform::FourCC("WMV1"), "Windows Media Video 7", {}},
                        {platform::FourCC("WMV2"), "Windows Media Video 8", {}},
                        {platform::FourCC("WMV3"), "Windows Media Video 9", {}},
                        {platform::FourCC("MSS2"), "Windows Media Video 9 Screen", {}},
                        {platform::FourCC("MP4S"), "ISO MPEG-4 Video v1", {}},
                        {0, "Full frames (uncompressed)", {}}};
    }

    FAKE_PROPERTY(std::int32_t, ContentType, "Profile.");
    FAKE_PROPERTY(const std::string&, ProfileName, "Profile.");
    FAKE_PROPERTY(std::int32_t, MinPacketSize, "Profile.");
    FAKE_PROPERTY(std::int32_t, MaxPacketSize, "Profile.");
    FAKE_STREAM_PROPERTY(bool, NonSquarePixelMode);
    FAKE_STREAM_PROPERTY(bool, InterlaceMode);

    std::shared_ptr<platform::WMEncAudience> AddAudience(std::int32_t bit_rate_bps) override {
        log->Call("AddAudience", "(" + std::to_string(bit_rate_bps) + ")");
        audiences.push_back(std::make_shared<FakeAudience>(log));
        return audiences.back();
    }
    int AudienceCount() const override { return static_cast<int>(audiences.size()); }
    std::shared_ptr<platform::WMEncAudience> Audience(int index) override {
        log->Call("Audience", "(" + std::to_string(index) + ")");
        return audiences.at(static_cast<std::size_t>(index));
    }
    platform::VbrMode VBRMode(platform::SourceType type, int) const override {
        return type == platform::SourceType::Audio ? audio_mode : video_mode;
    }
    void SetVBRMode(platform::SourceType type, int stream, platform::VbrMode mode) override {
        log->Call("VBRMode",
                  "(" + TypeName(type) + ", " + std::to_string(stream) + ")=" + ValueText(mode));
        (type == platform::SourceType::Audio ? audio_mode : video_mode) = mode;
    }
    int AudioCodecCount() const override { return static_cast<int>(audio_codecs.size()); }
    int VideoCodecCount() const override { return static_cast<int>(video_codecs.size()); }
    std::string EnumAudioCodec(int index) const override { return At(audio_codecs, index).name; }
    std::string EnumVideoCodec(int index) const override { return At(video_codecs, index).name; }
    std::uint32_t GetCodecFourCCFromIndex(platform::SourceType type, int index) const override {
        return At(Codecs(type), index).four_cc;
    }
    int GetCodecIndexFromFourCC(platform::SourceType type, std::uint32_t four_cc) const override {
        const auto& codecs = Codecs(type);
        for (std::size_t i = 0; i < codecs.size(); ++i)
            if (codecs[i].four_cc == four_cc) return static_cast<int>(i);
        throw platform::Error(platform::kInvalidArgument, "no such codec");
    }
    int AudioFormatCount(int codec_index) const override {
        return static_cast<int>(Formats(codec_index).size());
    }
    std::int32_t EnumAudioFormat(int codec_index, int format_index, std::int32_t& sampling_rate,
                                 std::int32_t& channels,
                                 std::int32_t& bits_per_sample) const override {
        const std::vector<FakeCodec::Format> formats = Formats(codec_index);
        const FakeCodec::Format& format = formats.at(static_cast<std::size_t>(format_index));
        sampling_rate = format.sampling_rate;
        channels = format.channels;
        bits_per_sample = format.bits;
        return format.value;
    }
    void LoadFromFile(const std::string& path) override {
        log->Call("Profile.LoadFromFile", "(" + path + ")");
        if (audiences.empty()) audiences.push_back(std::make_shared<FakeAudience>(log));
    }
    std::vector<std::string> TakeNotes() override { return std::exchange(notes, {}); }
    void SaveToFile(const std::string& path) override {
        log->Call("Profile.SaveToFile", "(" + path + ")");
    }
    void LoadFromIWMProfile(const platform::WMEncProfile2& profile) override {
        log->Call("Profile.LoadFromIWMProfile");
        value_MaxPacketSize = profile.MaxPacketSize();
        if (audiences.empty()) audiences.push_back(std::make_shared<FakeAudience>(log));
    }

    CallLogPtr log;
    std::vector<std::string> notes;  // of the next file
    std::vector<FakeCodec> audio_codecs, video_codecs;
    std::vector<std::shared_ptr<FakeAudience>> audiences;
    platform::VbrMode audio_mode = platform::VbrMode::Constant;
    platform::VbrMode video_mode = platform::VbrMode::Constant;

  private:
    static const FakeCodec& At(const std::vector<FakeCodec>& codecs, int index) {
        return codecs.at(static_cast<std::size_t>(index));
    }
    const std::vector<FakeCodec>& Codecs(platform::SourceType type) const {
        return type == platform::SourceType::Audio ? audio_codecs : video_codecs;
    }
    std::vector<FakeCodec::Format> Formats(int codec_index) const {
        const auto& by_mode = At(audio_codecs, codec_index).formats;
        const auto found = by_mode.find(static_cast<int>(audio_mode));
        return found == by_mode.end() ? std::vector<FakeCodec::Format>{} : found->second;
    }
};

}  // namespace test_support
