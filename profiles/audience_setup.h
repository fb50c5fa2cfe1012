// Fills the audio or the video stream of an audience from one description.
#pragma once

#include <cstdint>
#include <string_view>

#include "cli/encode_settings.h"
#include "platform/session_state.h"

namespace profiles {

struct AudioAudience {
    std::string_view codec;  // short name
    std::int32_t channels;
    std::int32_t sampling_rate;  // Hz
    std::int32_t bit_rate;       // bits per second
    std::int32_t bits_per_sample;
};

struct VideoAudience {
    std::string_view codec;           // short name
    std::int32_t bit_rate;            // bits per second
    std::int32_t width;               // pixels; 0 = the source's
    std::int32_t height;              // pixels; 0 = the source's
    std::int32_t frame_rate;          // thousandths of a frame per second
    std::int32_t buffer;              // milliseconds
    std::int32_t quality;             // 0..100
    std::int32_t key_frame_distance;  // milliseconds
};

/// Both write stream 0 and keep the codec's display name in `state`, whose profile must exist.
/// Errors of the encoder go to the caller.
void SetupAudioAudience(platform::SessionState& state, platform::WMEncAudience& audience,
                        const AudioAudience& audio);
/// The higher of `video.frame_rate` and the "-v_framerate" setting is used, and left in the
/// setting.
void SetupVideoAudience(platform::SessionState& state, cli::EncodeSettings& settings,
                        platform::WMEncAudience& audience, const VideoAudience& video);

/// Set the codec by its short name, and keep its display name in `state`.
void SetAudioCodec(platform::SessionState& state, platform::WMEncAudience& audience,
                   std::string_view codec);
void SetVideoCodec(platform::SessionState& state, platform::WMEncAudience& audience,
                   std::string_view codec);
/// Puts one quality where the rate control of the profile takes it: compression quality when it is
/// quality-based, else image sharpness.
void SetVideoQuality(const platform::WMEncProfile2& profile, platform::WMEncAudience& audience,
                     std::int32_t quality);

}  // namespace profiles
