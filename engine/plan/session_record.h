// A session as it was set up, as plain values: what a plan is made of.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/base/stream_header.h"
#include "engine/plan/profile_record.h"
#include "engine/plan/source_record.h"
#include "platform/encoder.h"

namespace engine {

struct SourceGroupRecord {
    std::string name;
    std::vector<AudioSourceRecord> audio;
    std::vector<VideoSourceRecord> video;
    std::optional<ProfileRecord> profile;  // the one that was attached
};

struct BroadcastRecord {
    std::int32_t http_port = 0;  // 0 = off
    std::string server;          // "" = no push
    std::string publishing_point;
    std::string template_name;
};

struct SessionRecord {
    std::vector<SourceGroupRecord> groups;
    std::string output;  // as it was given; "" = no file
    BroadcastRecord broadcast;
    ContentDescription content;
    std::vector<std::pair<std::string, platform::AttributeValue>> attributes;
    bool auto_stop = false;
    std::int32_t video_performance = 60;  // 0 fastest to 100 best
};

}  // namespace engine
