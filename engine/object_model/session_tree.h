// The whole tree that a session is set up on, and its small objects: file, broadcast, display
// information, attributes.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "engine/object_model/source_group.h"
#include "engine/object_model/source_plugins.h"
#include "engine/plan/session_record.h"

namespace engine {

class OutputFile : public platform::WMEncFile {
  public:
    std::string LocalFileName() const override { return name_; }
    void SetLocalFileName(const std::string& path) override { name_ = path; }

  private:
    std::string name_;  // as it was given
};

class Broadcast : public platform::WMEncBroadcast {
  public:
    std::int32_t PortNumber(platform::BroadcastProtocol protocol) const override;
    void SetPortNumber(platform::BroadcastProtocol protocol, std::int32_t port) override;
    std::string ServerName() const override { return state_.server; }
    void SetServerName(const std::string& name) override { state_.server = name; }
    std::string PublishingPoint() const override { return state_.publishing_point; }
    void SetPublishingPoint(const std::string& name) override { state_.publishing_point = name; }
    std::string Template() const override { return state_.template_name; }
    void SetTemplate(const std::string& name) override { state_.template_name = name; }

    const BroadcastRecord& State() const { return state_; }
    void TakeOver(const BroadcastRecord& state) { state_ = state; }

  private:
    BroadcastRecord state_;
};

class DisplayInfo : public platform::WMEncDisplayInfo {
  public:
    std::string Title() const override { return content_.title; }
    void SetTitle(const std::string& text) override { content_.title = text; }
    std::string Author() const override { return content_.author; }
    void SetAuthor(const std::string& text) override { content_.author = text; }
    std::string Copyright() const override { return content_.copyright; }
    void SetCopyright(const std::string& text) override { content_.copyright = text; }
    std::string Description() const override { return content_.description; }
    void SetDescription(const std::string& text) override { content_.description = text; }
    std::string Rating() const override { return content_.rating; }
    void SetRating(const std::string& text) override { content_.rating = text; }

    const ContentDescription& Content() const { return content_; }
    void TakeOver(const ContentDescription& content) { content_ = content; }

  private:
    ContentDescription content_;
};

/// A name that is added again takes the new value: an encoder that is used for several files keeps
/// one of each.
class Attributes : public platform::WMEncAttributes {
  public:
    void Add(const std::string& name, const platform::AttributeValue& value) override;
    int Count() const override { return static_cast<int>(items_.size()); }
    std::pair<std::string, platform::AttributeValue> Item(int index) const override;

    const std::vector<std::pair<std::string, platform::AttributeValue>>& Items() const {
        return items_;
    }
    void TakeOver(const std::vector<std::pair<std::string, platform::AttributeValue>>& items) {
        items_.clear();
        for (const auto& [name, value] : items) Add(name, value);
    }

  private:
    std::vector<std::pair<std::string, platform::AttributeValue>> items_;
};

struct SessionTree {
    explicit SessionTree(const std::shared_ptr<const EngineParts>& parts)
        : groups(parts), plugins(parts) {}

    /// The session as it is set up now.
    SessionRecord Record() const;
    /// Another session in its place. Its inputs may be named only: they are opened as far as they
    /// can be.
    void TakeOver(const SessionRecord& session);

    SourceGroups groups;
    OutputFile file;
    Broadcast broadcast;
    DisplayInfo display;
    Attributes attributes;
    SourcePlugins plugins;
    bool auto_stop = false;
    std::int32_t video_performance = 60;
};

}  // namespace engine
