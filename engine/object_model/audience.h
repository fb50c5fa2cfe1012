// One audience of a profile.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "engine/plan/profile_record.h"

namespace engine {

/// A view of one audience in its profile's state, which it keeps alive.
class Audience : public platform::WMEncAudience {
  public:
    Audience(std::shared_ptr<ProfileRecord> profile, std::size_t place)
        : profile_(std::move(profile)), place_(place) {}

    std::int32_t AudioCodec(int stream) const override;
    void SetAudioCodec(int stream, std::int32_t index) override;
    std::int32_t AudioBufferMax(int stream) const override;
    void SetAudioBufferMax(int stream, std::int32_t milliseconds) override;
    std::int32_t AudioPeakBitrate(int stream) const override;
    void SetAudioPeakBitrate(int stream, std::int32_t bps) override;
    void SetAudioConfig(int stream, std::int32_t channels, std::int32_t sampling_rate,
                        std::int32_t bit_rate, std::int32_t bits_per_sample) override;
    std::int32_t AudioBitrate(int stream) const override;
    std::int32_t AudioChannels(int stream) const override;
    std::int32_t AudioSamplingRate(int stream) const override;
    std::int32_t AudioBitsPerSample(int stream) const override;

    std::int32_t VideoCodec(int stream) const override;
    void SetVideoCodec(int stream, std::int32_t index) override;
    std::int32_t VideoBitrate(int stream) const override;
    void SetVideoBitrate(int stream, std::int32_t bps) override;
    std::int32_t VideoWidth(int stream) const override;
    void SetVideoWidth(int stream, std::int32_t pixels) override;
    std::int32_t VideoHeight(int stream) const override;
    void SetVideoHeight(int stream, std::int32_t pixels) override;
    std::int32_t VideoFPS(int stream) const override;
    void SetVideoFPS(int stream, std::int32_t thousandths) override;
    std::int32_t VideoKeyFrameDistance(int stream) const override;
    void SetVideoKeyFrameDistance(int stream, std::int32_t milliseconds) override;
    std::int32_t VideoBufferSize(int stream) const override;
    void SetVideoBufferSize(int stream, std::int32_t milliseconds) override;
    std::int32_t VideoImageSharpness(int stream) const override;
    void SetVideoImageSharpness(int stream, std::int32_t sharpness) override;
    std::int32_t VideoCompressionQuality(int stream) const override;
    void SetVideoCompressionQuality(int stream, std::int32_t quality) override;
    std::int32_t VideoBufferMax(int stream) const override;
    void SetVideoBufferMax(int stream, std::int32_t milliseconds) override;
    std::int32_t VideoPeakBitrate(int stream) const override;
    void SetVideoPeakBitrate(int stream, std::int32_t bps) override;
    platform::PropertyValue Property(platform::SourceType type, int stream,
                                     const std::string& name) const override;
    void SetProperty(platform::SourceType type, int stream, const std::string& name,
                     const platform::PropertyValue& value) override;

  private:
    AudienceRecord& State(int stream) const;

    std::shared_ptr<ProfileRecord> profile_;
    std::size_t place_;
};

}  // namespace engine
