// A profile: content kind, rate control, packet sizes, audiences, and the codec listings.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "engine/plan/profile_record.h"
#include "platform/file_system.h"

namespace engine {

/// Its audiences share its state and may outlive it. Copies share nothing.
class Profile : public platform::WMEncProfile2 {
  public:
    /// @param files  reads and writes profile files; without it there are none
    explicit Profile(std::shared_ptr<platform::FileSystem> files = nullptr,
                     const ProfileRecord& state = {})
        : files_(std::move(files)), state_(std::make_shared<ProfileRecord>(state)) {}

    /// The state of a profile that this engine made. Throws Error (invalid argument) for others.
    static const ProfileRecord& StateOf(const platform::WMEncProfile2& profile);
    const ProfileRecord& State() const { return *state_; }

    std::int32_t ContentType() const override { return state_->Content(); }
    void SetContentType(std::int32_t content_type) override;
    std::string ProfileName() const override { return state_->name; }
    void SetProfileName(const std::string& name) override { state_->name = name; }
    std::shared_ptr<platform::WMEncAudience> AddAudience(std::int32_t bit_rate_bps) override;
    int AudienceCount() const override { return static_cast<int>(state_->audiences.size()); }
    std::shared_ptr<platform::WMEncAudience> Audience(int index) override;

    platform::VbrMode VBRMode(platform::SourceType type, int stream) const override;
    void SetVBRMode(platform::SourceType type, int stream, platform::VbrMode mode) override;
    int AudioCodecCount() const override;
    int VideoCodecCount() const override;
    /// The name of every codec of the table, also of one that the mode does not list.
    std::string EnumAudioCodec(int index) const override;
    std::string EnumVideoCodec(int index) const override;
    std::uint32_t GetCodecFourCCFromIndex(platform::SourceType type, int index) const override;
    int GetCodecIndexFromFourCC(platform::SourceType type, std::uint32_t four_cc) const override;
    int AudioFormatCount(int codec_index) const override;
    std::int32_t EnumAudioFormat(int codec_index, int format_index, std::int32_t& sampling_rate,
                                 std::int32_t& channels,
                                 std::int32_t& bits_per_sample) const override;

    bool NonSquarePixelMode(int stream) const override;
    void SetNonSquarePixelMode(int stream, bool on) override;
    bool InterlaceMode(int stream) const override;
    void SetInterlaceMode(int stream, bool on) override;
    std::int32_t MinPacketSize() const override { return state_->min_packet_bytes; }
    void SetMinPacketSize(std::int32_t bytes) override;
    std::int32_t MaxPacketSize() const override { return state_->max_packet_bytes; }
    void SetMaxPacketSize(std::int32_t bytes) override;

    /// The content kind stays what it was set to; of it, only the streams of the file are encoded.
    void LoadFromFile(const std::string& path) override;
    void SaveToFile(const std::string& path) override;
    void CheckSaveToFile(const std::string& path) const override;
    std::vector<std::string> TakeNotes() override { return std::exchange(notes_, {}); }
    void LoadFromIWMProfile(const platform::WMEncProfile2& profile) override;

  private:
    void CheckFiles() const;

    std::shared_ptr<platform::FileSystem> files_;
    std::shared_ptr<ProfileRecord> state_;  // never null
    std::vector<std::string> notes_;
};

}  // namespace engine
