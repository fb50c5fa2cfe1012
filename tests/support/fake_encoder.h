// The encoder object model without an encoder: remembers every property, notes every write and
// call in the shared log ("VideoBitrate(0)=84000", "Audio.MarkIn=1000", "Encoder.Start"), fails on
// request by the name before "(" or "=", and delivers states only when a test says so.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/encoder.h"
#include "support/call_log.h"

namespace test_support {

inline std::string ValueText(const std::string& value) { return value; }
inline std::string ValueText(bool value) { return value ? "true" : "false"; }
inline std::string ValueText(std::int32_t value) { return std::to_string(value); }
inline std::string ValueText(std::uint32_t value) { return std::to_string(value); }
inline std::string ValueText(platform::VbrMode value) {
    return std::to_string(static_cast<int>(value));
}
inline std::string TypeName(platform::SourceType type) {
    return type == platform::SourceType::Audio   ? "audio"
           : type == platform::SourceType::Video ? "video"
                                                 : std::to_string(static_cast<int>(type));
}

// A property with its log line: FAKE_PROPERTY for one value, FAKE_STREAM_PROPERTY for stream 0's.
#define FAKE_PROPERTY(Type, Name, Prefix)                               \
    std::decay_t<Type> Name() const override { return value_##Name; }   \
    void Set##Name(Type value) override {                               \
        log->Call(std::string(Prefix) + #Name, "=" + ValueText(value)); \
        value_##Name = value;                                           \
    }                                                                   \
    std::decay_t<Type> value_##Name {}
#define FAKE_STREAM_PROPERTY(Type, Name)                                          \
    Type Name(int) const override { return value_##Name; }                        \
    void Set##Name(int stream, Type value) override {                             \
        log->Call(#Name, "(" + std::to_string(stream) + ")=" + ValueText(value)); \
        value_##Name = value;                                                     \
    }                                                                             \
    Type value_##Name {}

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
    void SaveToFile(const std::string& path) override {
        log->Call("Profile.SaveToFile", "(" + path + ")");
    }
    void LoadFromIWMProfile(const platform::WMEncProfile2& profile) override {
        log->Call("Profile.LoadFromIWMProfile");
        value_MaxPacketSize = profile.MaxPacketSize();
        if (audiences.empty()) audiences.push_back(std::make_shared<FakeAudience>(log));
    }

    CallLogPtr log;
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

/// Base is the audio or the video source; the log says "Audio." or "Video." before each name.
template <typename Base>
class FakeSource : public Base {
  public:
    explicit FakeSource(CallLogPtr shared_log)
        : log(std::move(shared_log)),
          kind(std::is_same_v<Base, platform::WMEncAudioSource> ? "Audio." : "Video.") {}

    using Base::SetInput;
    void SetInput(const std::string& new_input, const std::string& new_scheme) override {
        log->Call(kind + "SetInput",
                  "(" + new_input + (new_scheme.empty() ? "" : ", " + new_scheme) + ")");
        input = new_input;
        scheme = new_scheme;
    }
    std::string Input() const override { return input; }
    std::string Scheme() const override { return scheme; }
    std::int32_t Duration() const override { return duration; }
    FAKE_PROPERTY(std::int32_t, MarkIn, kind);
    FAKE_PROPERTY(std::int32_t, MarkOut, kind);
    FAKE_PROPERTY(std::int32_t, PreProcessPass, kind);

    CallLogPtr log;
    std::string kind;
    std::string input, scheme;
    std::int32_t duration = 0;
};

class FakeAudioSource : public FakeSource<platform::WMEncAudioSource> {
  public:
    using FakeSource::FakeSource;
    FAKE_PROPERTY(std::int32_t, ContentMode, kind);
    FAKE_PROPERTY(const std::string&, ContentEDL, kind);
};

class FakeVideoSource : public FakeSource<platform::WMEncVideoSource> {
  public:
    using FakeSource::FakeSource;
    FAKE_PROPERTY(std::int32_t, Optimization, kind);
    FAKE_PROPERTY(std::uint32_t, PixelFormat, kind);
    FAKE_PROPERTY(std::int32_t, PixelAspectRatioX, kind);
    FAKE_PROPERTY(std::int32_t, PixelAspectRatioY, kind);
    FAKE_PROPERTY(std::int32_t, CroppingLeftMargin, kind);
    FAKE_PROPERTY(std::int32_t, CroppingRightMargin, kind);
    FAKE_PROPERTY(std::int32_t, CroppingTopMargin, kind);
    FAKE_PROPERTY(std::int32_t, CroppingBottomMargin, kind);
    FAKE_PROPERTY(std::int32_t, CaptureRate, kind);
    FAKE_PROPERTY(std::int32_t, StillDuration, kind);
    std::string CaptureArea() const override {
        return scheme == "screencap" ? "the screen" : std::string();
    }
};

class FakeSourceGroup : public platform::WMEncSourceGroup {
  public:
    FakeSourceGroup(CallLogPtr shared_log, std::string group_name)
        : log(std::move(shared_log)), name(std::move(group_name)) {}

    std::string Name() const override { return name; }
    std::shared_ptr<platform::WMEncSource> AddSource(platform::SourceType type) override {
        log->Call("AddSource", "(" + TypeName(type) + ")");
        if (type == platform::SourceType::Audio) {
            audio.push_back(std::make_shared<FakeAudioSource>(log));
            return audio.back();
        }
        video.push_back(std::make_shared<FakeVideoSource>(log));
        return video.back();
    }
    /// Adds what `file_has_audio` and `file_has_video` say.
    void AutoSetFileSource(const std::string& path) override {
        log->Call("AutoSetFileSource", "(" + path + ")");
        if (file_has_audio) audio.push_back(std::make_shared<FakeAudioSource>(log));
        if (file_has_video) video.push_back(std::make_shared<FakeVideoSource>(log));
        for (const auto& source : audio) source->input = path;
        for (const auto& source : video) source->input = path;
    }
    int SourceCount(platform::SourceType type) const override {
        return type == platform::SourceType::Audio   ? static_cast<int>(audio.size())
               : type == platform::SourceType::Video ? static_cast<int>(video.size())
                                                     : 0;
    }
    std::shared_ptr<platform::WMEncSource> Source(platform::SourceType type, int index) override {
        log->Call("Source", "(" + TypeName(type) + ", " + std::to_string(index) + ")");
        if (type == platform::SourceType::Audio) return audio.at(static_cast<std::size_t>(index));
        return video.at(static_cast<std::size_t>(index));
    }
    std::shared_ptr<platform::WMEncProfile2> Profile() override { return profile; }
    void SetProfile(const platform::WMEncProfile2& attached) override {
        log->Call("Group.Profile=", attached.ProfileName());
        profile = std::make_shared<FakeProfile>(log);
        profile->value_ProfileName = attached.ProfileName();
        profile->value_MaxPacketSize = attached.MaxPacketSize();
    }

    CallLogPtr log;
    std::string name;
    bool file_has_audio = true, file_has_video = true;
    std::vector<std::shared_ptr<FakeAudioSource>> audio;
    std::vector<std::shared_ptr<FakeVideoSource>> video;
    std::shared_ptr<FakeProfile> profile;
};

class FakePluginInfo : public platform::WMEncSourcePluginInfo {
  public:
    FakePluginInfo(bool has_resources, int media_type, std::vector<std::string> device_names)
        : resources(has_resources), type(media_type), devices(std::move(device_names)) {}
    bool Resources() const override { return resources; }
    platform::PluginMediaType MediaType() const override {
        return static_cast<platform::PluginMediaType>(type);
    }
    int Count() const override { return static_cast<int>(devices.size()); }
    std::string Item(int index) const override {
        return devices.at(static_cast<std::size_t>(index));
    }

    bool resources;
    int type;
    std::vector<std::string> devices;
};

class FakeEncoder : public platform::WMEncoder {
  public:
    explicit FakeEncoder(CallLogPtr shared_log)
        : log(std::move(shared_log)),
          file(log),
          broadcast(log),
          display_info(log),
          attributes(log),
          statistics(log),
          groups(log) {}

    struct FileObject : platform::WMEncFile {
        explicit FileObject(CallLogPtr shared_log) : log(std::move(shared_log)) {}
        FAKE_PROPERTY(const std::string&, LocalFileName, "File.");
        CallLogPtr log;
    };
    struct BroadcastObject : platform::WMEncBroadcast {
        explicit BroadcastObject(CallLogPtr shared_log) : log(std::move(shared_log)) {}
        std::int32_t PortNumber(platform::BroadcastProtocol) const override { return port; }
        void SetPortNumber(platform::BroadcastProtocol protocol, std::int32_t number) override {
            log->Call("Broadcast.PortNumber", "(" + std::to_string(static_cast<int>(protocol)) +
                                                  ")=" + std::to_string(number));
            port = number;
        }
        FAKE_PROPERTY(const std::string&, ServerName, "Broadcast.");
        FAKE_PROPERTY(const std::string&, PublishingPoint, "Broadcast.");
        FAKE_PROPERTY(const std::string&, Template, "Broadcast.");
        CallLogPtr log;
        std::int32_t port = 0;
    };
    struct DisplayObject : platform::WMEncDisplayInfo {
        explicit DisplayObject(CallLogPtr shared_log) : log(std::move(shared_log)) {}
        FAKE_PROPERTY(const std::string&, Title, "DisplayInfo.");
        FAKE_PROPERTY(const std::string&, Author, "DisplayInfo.");
        FAKE_PROPERTY(const std::string&, Copyright, "DisplayInfo.");
        FAKE_PROPERTY(const std::string&, Description, "DisplayInfo.");
        FAKE_PROPERTY(const std::string&, Rating, "DisplayInfo.");
        CallLogPtr log;
    };
    struct AttributesObject : platform::WMEncAttributes {
        explicit AttributesObject(CallLogPtr shared_log) : log(std::move(shared_log)) {}
        void Add(const std::string& name, const platform::AttributeValue& value) override {
            const std::int32_t* number = std::get_if<std::int32_t>(&value);
            log->Call("Attributes.Add", "(" + name + ", " +
                                            (number != nullptr ? std::to_string(*number)
                                                               : std::get<std::string>(value)) +
                                            ")");
            items.emplace_back(name, value);
        }
        int Count() const override { return static_cast<int>(items.size()); }
        std::pair<std::string, platform::AttributeValue> Item(int index) const override {
            return items.at(static_cast<std::size_t>(index));
        }
        CallLogPtr log;
        std::vector<std::pair<std::string, platform::AttributeValue>> items;
    };
    struct GroupsObject : platform::WMEncSourceGroupCollection {
        explicit GroupsObject(CallLogPtr shared_log) : log(std::move(shared_log)) {}
        std::shared_ptr<platform::WMEncSourceGroup> Add(const std::string& name) override {
            log->Call("Groups.Add", "(" + name + ")");
            items.push_back(std::make_shared<FakeSourceGroup>(log, name));
            items.back()->file_has_audio = file_has_audio;
            items.back()->file_has_video = file_has_video;
            return items.back();
        }
        int Count() const override { return static_cast<int>(items.size()); }
        std::shared_ptr<platform::WMEncSourceGroup> Item(int index) override {
            log->Call("Groups.Item", "(" + std::to_string(index) + ")");
            return items.at(static_cast<std::size_t>(index));
        }
        void Remove(const std::string& name) override {
            log->Call("Groups.Remove", "(" + name + ")");
            std::erase_if(items, [&](const auto& group) { return group->name == name; });
        }
        CallLogPtr log;
        std::vector<std::shared_ptr<FakeSourceGroup>> items;
        bool file_has_audio = true, file_has_video = true;  // what AutoSetFileSource finds
    };
    struct PluginsObject : platform::WMEncSourcePluginInfoManager {
        int Count() const override { return static_cast<int>(items.size()); }
        std::shared_ptr<platform::WMEncSourcePluginInfo> Item(int index) override {
            return items.at(static_cast<std::size_t>(index));
        }
        std::vector<std::shared_ptr<FakePluginInfo>> items;
    };
    /// Plain values for a test to set; reading notes nothing but can be made to fail.
    struct StatisticsObject : platform::WMEncStatistics {
        explicit StatisticsObject(CallLogPtr shared_log) : log(std::move(shared_log)) {}
        platform::Currency EncodingTime() override {
            return Read("Statistics.EncodingTime", encoding_time);
        }
        platform::OutputStats StreamOutputStats(platform::SourceType type, int, int) override {
            return Read("Statistics.StreamOutputStats",
                        type == platform::SourceType::Audio ? audio : video);
        }
        platform::OutputStats WMFOutputStats() override {
            return Read("Statistics.WMFOutputStats", total);
        }
        platform::FileArchiveStats FileArchiveStats() override {
            return Read("Statistics.FileArchiveStats", archive);
        }
        template <typename Value>
        Value Read(const std::string& operation, const Value& value) {
            log->Call(operation);
            log->lines.pop_back();
            return value;
        }
        CallLogPtr log;
        platform::Currency encoding_time;
        platform::OutputStats audio, video, total;
        platform::FileArchiveStats archive;
    };

    platform::WMEncSourceGroupCollection& SourceGroupCollection() override { return groups; }
    platform::WMEncFile& File() override { return file; }
    platform::WMEncBroadcast& Broadcast() override { return broadcast; }
    platform::WMEncDisplayInfo& DisplayInfo() override { return display_info; }
    platform::WMEncAttributes& Attributes() override { return attributes; }
    platform::WMEncStatistics& Statistics() override { return statistics; }
    platform::WMEncSourcePluginInfoManager& SourcePluginInfoManager() override { return plugins; }
    FAKE_PROPERTY(bool, AutoStop, "Encoder.");
    FAKE_PROPERTY(std::int32_t, VideoPerformance, "Encoder.");
    /// Gives the encoder the group "loaded" with `loaded_audio` and `loaded_video` sources.
    void Load(const std::string& path) override {
        log->Call("Encoder.Load", "(" + path + ")");
        auto group = std::make_shared<FakeSourceGroup>(log, "loaded");
        if (loaded_audio) group->audio.push_back(std::make_shared<FakeAudioSource>(log));
        if (loaded_video) group->video.push_back(std::make_shared<FakeVideoSource>(log));
        group->profile = std::make_shared<FakeProfile>(log);
        group->profile->audiences.push_back(std::make_shared<FakeAudience>(log));
        groups.items.push_back(std::move(group));
    }
    std::vector<std::string> notes;  // of the next preparation
    std::vector<std::string> TakeNotes() override { return std::exchange(notes, {}); }
    void PrepareToEncode(bool force) override {
        log->Call("Encoder.PrepareToEncode", force ? "(true)" : "(false)");
        if (on_prepare) on_prepare();
    }
    void Start() override {
        log->Call("Encoder.Start");
        state = platform::EncoderState::Running;
        if (on_start) on_start(*this);
    }
    void Stop() override {
        log->Call("Encoder.Stop");
        if (on_stop) on_stop(*this);
    }
    void Pause() override { log->Call("Encoder.Pause"); }
    platform::EncoderState RunState() const override { return state; }
    void SetEvents(platform::WMEncoderEvents* listener) override { events = listener; }

    /// Changes the state and delivers it as an event.
    void Deliver(platform::EncoderState new_state) {
        state = new_state;
        if (events != nullptr) events->OnStateChange(new_state);
    }

    CallLogPtr log;
    FileObject file;
    BroadcastObject broadcast;
    DisplayObject display_info;
    AttributesObject attributes;
    StatisticsObject statistics;
    GroupsObject groups;
    PluginsObject plugins;
    bool loaded_audio = true, loaded_video = true;
    platform::EncoderState state = platform::EncoderState::Stopped;
    platform::WMEncoderEvents* events = nullptr;
    std::function<void(FakeEncoder&)> on_start, on_stop;
    std::function<void()> on_prepare;
};

}  // namespace test_support
