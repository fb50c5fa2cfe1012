// What a profile and its audiences remember, as plain values: copying it copies the profile.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/plan/audio_formats.h"
#include "platform/encoder.h"

namespace engine {

/// Codecs are places in the codec table, the same in every mode. Units as in WMEncAudience; a zero
/// is "not set" where no other default stands here.
struct AudioSettings {
    std::int32_t codec = 0;
    AudioFormat format{};
    std::int32_t peak_buffer_ms = 0;
    std::optional<std::int32_t> peak_rate_bps;
};

struct VideoSettings {
    std::int32_t codec = 2;  // Windows Media Video 9
    std::int32_t bit_rate_bps = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t frame_rate = 30000;
    std::int32_t key_frame_distance_ms = 10000;
    std::int32_t buffer_ms = 5000;
    std::int32_t sharpness = 75;
    std::int32_t quality = 75;
    std::int32_t peak_buffer_ms = 0;
    std::optional<std::int32_t> peak_rate_bps;
};

struct AudienceRecord {
    std::int32_t bit_rate_bps = 0;
    AudioSettings audio;
    VideoSettings video;
    std::map<std::pair<platform::SourceType, std::string>, platform::PropertyValue> properties;
    std::int32_t streams = platform::kContentAudioVideo;  // that it has settings of
};

struct ProfileRecord {
    std::int32_t content_type = platform::kContentAudioVideo;
    std::string name;
    platform::VbrMode audio_mode = platform::VbrMode::Constant;
    platform::VbrMode video_mode = platform::VbrMode::Constant;
    bool non_square_pixels = false;
    bool interlaced = false;
    std::int32_t min_packet_bytes = 0;
    std::int32_t max_packet_bytes = 0;
    std::vector<AudienceRecord> audiences;
    /// The file that it comes from, whose unknown parts are written back; null when it was made
    /// here.
    std::shared_ptr<const std::string> file_text = nullptr;

    /// What is encoded: what was asked for, as far as the first audience has it.
    std::int32_t Content() const {
        return audiences.empty() ? content_type : content_type & audiences.front().streams;
    }
};

}  // namespace engine
