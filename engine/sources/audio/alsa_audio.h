// Audio from an ALSA device, for machines without a sound server.
#pragma once

#include <memory>
#include <string>

#include "engine/base/av/live_source.h"

namespace engine {

/// Records at 48000 or 44100 samples a second and in stereo where the device can, else at what
/// comes nearest. Samples that the device loses because nobody fetched them are a gap in the times.
/// @param pcm  ALSA's name of the device, such as "default" or "hw:CARD=PCH,DEV=0"
/// Throws platform::Error that names the device.
std::unique_ptr<LiveSource> OpenAlsaAudio(const std::string& pcm, FramePool& frames);

}  // namespace engine
