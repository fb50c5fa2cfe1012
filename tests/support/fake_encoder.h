// The encoder object model without an encoder: remembers every property, notes every write and
// call in the shared log ("VideoBitrate(0)=84000", "Audio.MarkIn=1000", "Encoder.Start"), fails on
// request by the name before "(" or "=", and delivers states only when a test says so.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/fake_profile.h"
#include "support/fake_sources.h"

namespace test_support {

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
            if (index < 0 || index >= Count())
                throw platform::Error(platform::kInvalidArgument, "no such group");
            return items[static_cast<std::size_t>(index)];
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
        platform::NetworkStats NetworkStats() override { return network; }
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
        platform::NetworkStats network;
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
    void Save(const std::string& path) override { log->Call("Encoder.Save", "(" + path + ")"); }
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
