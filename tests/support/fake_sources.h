// Sources, their group and the list of devices, without anything to read.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/fake_profile.h"
#include "support/fake_property.h"

namespace test_support {

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
    std::string CaptureDevice() const override {
        return scheme == "device" ? "a microphone" : std::string();
    }
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

}  // namespace test_support
