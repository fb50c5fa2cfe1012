#include "engine/object_model/profile.h"

#include <fmt/format.h>

#include "engine/files/file_text.h"
#include "engine/files/profile_file.h"
#include "engine/object_model/audience.h"
#include "engine/plan/codec_names.h"
#include "engine/plan/value_ranges.h"

namespace engine {

namespace {

using platform::SourceType;
using platform::VideoCodecRow;

template <typename Rows>
const auto& RowAt(const Rows& rows, const char* list, int index) {
    InRange(list, index, 0, static_cast<std::int32_t>(rows.size()) - 1);
    return rows[static_cast<std::size_t>(index)];
}

const AudioCodecRow& AudioRow(int index) {
    return RowAt(platform::kAudioCodecs, "The audio codec index", index);
}
const VideoCodecRow& VideoRow(int index) {
    return RowAt(platform::kVideoCodecs, "The video codec index", index);
}

}  // namespace

const ProfileRecord& Profile::StateOf(const platform::WMEncProfile2& profile) {
    const auto* own = dynamic_cast<const Profile*>(&profile);
    if (own == nullptr)
        RefuseArgument("The profile was not made by this encoder: make a new one and set it up");
    return *own->state_;
}

void Profile::SetContentType(std::int32_t content_type) {
    // 0 is a session without sources; preparing it says so.
    if (content_type != 0 && content_type != platform::kContentAudio &&
        content_type != platform::kContentVideo && content_type != platform::kContentAudioVideo)
        RefuseArgument(fmt::format(
            "ContentType cannot be {}: give 1 (audio), 16 (video) or 17 (both)", content_type));
    state_->content_type = content_type;
}

std::shared_ptr<platform::WMEncAudience> Profile::AddAudience(std::int32_t bit_rate_bps) {
    AudienceRecord audience;
    audience.bit_rate_bps = InRange("The audience's bit rate", bit_rate_bps, 1, kNoUpperLimit);
    state_->audiences.push_back(audience);
    return Audience(AudienceCount() - 1);
}

std::shared_ptr<platform::WMEncAudience> Profile::Audience(int index) {
    if (index < 0 || index >= AudienceCount())
        RefuseArgument(
            fmt::format("There is no audience {} in the profile \"{}\"", index, state_->name));
    return std::make_shared<engine::Audience>(state_, static_cast<std::size_t>(index));
}

platform::VbrMode Profile::VBRMode(SourceType type, int stream) const {
    CheckAudioOrVideo(type);
    CheckStream(stream);
    return type == SourceType::Audio ? state_->audio_mode : state_->video_mode;
}

void Profile::SetVBRMode(SourceType type, int stream, platform::VbrMode mode) {
    CheckAudioOrVideo(type);
    CheckStream(stream);
    InRange("VBRMode", static_cast<std::int32_t>(mode), 1, 4);
    (type == SourceType::Audio ? state_->audio_mode : state_->video_mode) = mode;
}

int Profile::AudioCodecCount() const {
    return platform::CodecCount(platform::kAudioCodecs, state_->audio_mode);
}
int Profile::VideoCodecCount() const {
    return platform::CodecCount(platform::kVideoCodecs, state_->video_mode);
}

std::string Profile::EnumAudioCodec(int index) const {
    return AudioDisplayName(AudioRow(index), state_->audio_mode);
}
std::string Profile::EnumVideoCodec(int index) const { return std::string(VideoRow(index).name); }

std::uint32_t Profile::GetCodecFourCCFromIndex(SourceType type, int index) const {
    CheckAudioOrVideo(type);
    return type == SourceType::Audio ? AudioRow(index).tag : VideoRow(index).four_cc;
}

int Profile::GetCodecIndexFromFourCC(SourceType type, std::uint32_t four_cc) const {
    CheckAudioOrVideo(type);
    int index = 0;
    if (type == SourceType::Audio) {
        for (const AudioCodecRow& row : platform::kAudioCodecs) {
            if (row.tag == four_cc) return index;
            ++index;
        }
    } else {
        for (const VideoCodecRow& row : platform::kVideoCodecs) {
            if (row.four_cc == four_cc) return index;
            ++index;
        }
    }
    RefuseArgument(fmt::format("There is no {} codec with the code 0x{:X}",
                               type == SourceType::Audio ? "audio" : "video", four_cc));
}

int Profile::AudioFormatCount(int codec_index) const {
    return static_cast<int>(AudioFormats(AudioRow(codec_index), state_->audio_mode).size());
}

std::int32_t Profile::EnumAudioFormat(int codec_index, int format_index,
                                      std::int32_t& sampling_rate, std::int32_t& channels,
                                      std::int32_t& bits_per_sample) const {
    const auto formats = AudioFormats(AudioRow(codec_index), state_->audio_mode);
    const AudioFormat& format = RowAt(formats, "The audio format index", format_index);
    sampling_rate = format.sampling_rate;
    channels = format.channels;
    bits_per_sample = format.bits_per_sample;
    return format.value;
}

bool Profile::NonSquarePixelMode(int stream) const {
    CheckStream(stream);
    return state_->non_square_pixels;
}
void Profile::SetNonSquarePixelMode(int stream, bool on) {
    CheckStream(stream);
    state_->non_square_pixels = on;
}
bool Profile::InterlaceMode(int stream) const {
    CheckStream(stream);
    return state_->interlaced;
}
void Profile::SetInterlaceMode(int stream, bool on) {
    CheckStream(stream);
    state_->interlaced = on;
}
void Profile::SetMinPacketSize(std::int32_t bytes) {
    state_->min_packet_bytes = InRange(ranges::kMinPacketSize, bytes);
}
void Profile::SetMaxPacketSize(std::int32_t bytes) {
    state_->max_packet_bytes = InRange(ranges::kMaxPacketSize, bytes);
}

void Profile::LoadFromFile(const std::string& path) {
    CheckFiles();
    const std::string host_path = files_->GetAbsolutePathName(path);
    const std::string bytes = files_->ReadBytes(path, files::kMostProfileBytes);
    try {
        files::ProfileFile file = files::ReadProfile(files::DecodeText(bytes));
        file.profile.content_type = state_->content_type;
        *state_ = std::move(file.profile);
        notes_ = std::move(file.notes);
    } catch (const platform::Error& error) {
        throw platform::Error(error.unsigned_number(),
                              fmt::format("The profile file {} cannot be loaded: {}", host_path,
                                          error.description()));
    }
}

void Profile::CheckSaveToFile(const std::string& path) const {
    CheckFiles();
    files::WriteProfile(*state_);
    const std::string host_path = files_->GetAbsolutePathName(path);
    if (!files_->FolderExists(files_->GetParentFolderName(host_path)))
        throw platform::Error(platform::kPathNotFound,
                              fmt::format("Cannot write the file {}: its folder does not exist. "
                                          "Check the path.",
                                          host_path));
    if (files_->FolderExists(path) || files_->IsSpecialFile(path))
        RefuseArgument(fmt::format("Cannot write the file {}: it is no ordinary file. Name a file.",
                                   host_path));
}

void Profile::SaveToFile(const std::string& path) {
    CheckFiles();
    files_->WriteBytes(path, files::EncodeText(files::WriteProfile(*state_)));
}

void Profile::CheckFiles() const {
    if (!files_) RefuseArgument("The profile was made without files to load from or save to");
}

void Profile::LoadFromIWMProfile(const platform::WMEncProfile2& profile) {
    *state_ = ProfileRecord(StateOf(profile));
}

}  // namespace engine
