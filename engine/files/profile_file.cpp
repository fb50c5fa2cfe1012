#include "engine/files/profile_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <pugixml.hpp>
#include <variant>

#include "engine/files/audio_stream.h"
#include "engine/files/media_subtype.h"
#include "engine/files/stream_config.h"
#include "engine/files/video_stream.h"
#include "engine/files/xml_tree.h"
#include "engine/plan/value_ranges.h"

namespace engine::files {

namespace {

using platform::SourceType;

constexpr const char* kVersion = "589824";  // 9.0
constexpr const char* kStream = "streamconfig";

const std::pair<SourceType, std::string> kConformance = {SourceType::Video,
                                                         "DeviceConformanceTarget"};

pugi::xml_node FindStream(const pugi::xml_node& root, StreamKind kind) {
    return root.find_child([&](const pugi::xml_node& child) {
        return IsNamed(child.name(), kStream) && KindOf(child) == kind;
    });
}

/// One line about the streams that are not used; none where all are.
void NoteLeftOut(const pugi::xml_node& root, const pugi::xml_node& audio,
                 const pugi::xml_node& video, std::vector<std::string>& notes) {
    std::vector<std::string> left_out;
    for (const pugi::xml_node& child : root.children())
        if (IsNamed(child.name(), kStream) && child != audio && child != video)
            left_out.push_back(fmt::format("{} ({})", StreamName(child), Word(KindOf(child))));
    if (!left_out.empty())
        notes.push_back(fmt::format("Of the profile \"{}\" these are left out: {}.",
                                    AttributeNamed(root, "name").value(),
                                    fmt::join(left_out, ", ")));
}

std::int32_t PacketSize(const pugi::xml_node& root, const char* name, const ValueRange& range,
                        std::vector<std::string>& notes) {
    const ValueReader reader("the profile", notes);
    return reader.Clamped(range, reader.Number(root, name));
}

std::int64_t NextStreamNumber(const pugi::xml_node& root) {
    std::int64_t last = 0;
    for (const pugi::xml_node& child : root.children())
        last =
            std::max(last, ParseNumber(AttributeNamed(child, "streamnumber").value()).value_or(0));
    return last + 1;
}

/// The profile's stream of that kind, made behind the others where it is missing.
pugi::xml_node NeedStream(pugi::xml_node root, StreamKind kind) {
    pugi::xml_node stream = FindStream(root, kind);
    if (stream) return stream;
    const std::int64_t number = NextStreamNumber(root);
    pugi::xml_node last;
    for (const pugi::xml_node& child : root.children())
        if (IsNamed(child.name(), kStream)) last = child;
    stream = last ? root.insert_child_after(kStream, last) : root.prepend_child(kStream);
    Put(stream, "majortype", SubtypeText(kind == StreamKind::Audio ? kAudioType : kVideoType));
    PutNumber(stream, "streamnumber", number);
    pugi::xml_node priority = NeedChild(root, "streamprioritization").append_child("stream");
    PutNumber(priority, "number", number);
    PutNumber(priority, "mandatory", 0);
    return stream;
}

pugi::xml_node NeedRoot(pugi::xml_document& document, const ProfileRecord& profile) {
    if (profile.file_text) {
        ParseXml(*profile.file_text, document);
        for (pugi::xml_node node = document.first_child(); node;) {
            const pugi::xml_node next = node.next_sibling();
            if (node.type() == pugi::node_declaration) document.remove_child(node);
            node = next;
        }
        return ChildNamed(document, "profile");
    }
    pugi::xml_node root = document.append_child("profile");
    Put(root, "version", kVersion);
    Put(root, "storageformat", "1");
    Put(root, "name", profile.name);
    Put(root, "description", "");
    return root;
}

}  // namespace

ProfileFile ReadProfile(const std::string& utf8) {
    pugi::xml_document document;
    ParseXml(utf8, document);
    const pugi::xml_node root = ChildNamed(document, "profile");
    if (!root) throw platform::Error(platform::kInvalidData, "it is no profile");
    const pugi::xml_node audio = FindStream(root, StreamKind::Audio);
    const pugi::xml_node video = FindStream(root, StreamKind::Video);
    if (!audio && !video)
        throw platform::Error(platform::kInvalidData,
                              "the profile has neither an audio nor a video stream");

    ProfileFile file;
    ProfileRecord& profile = file.profile;
    profile.name = AttributeNamed(root, "name").value();
    profile.min_packet_bytes =
        PacketSize(root, "x-minpacketsize", ranges::kMinPacketSize, file.notes);
    profile.max_packet_bytes =
        PacketSize(root, "x-maxpacketsize", ranges::kMaxPacketSize, file.notes);
    AudienceRecord& audience = profile.audiences.emplace_back();
    audience.streams = 0;
    if (audio) {
        AudioStream stream = ReadAudioStream(audio, ValueReader(StreamName(audio), file.notes));
        audience.streams |= platform::kContentAudio;
        profile.audio_mode = stream.mode;
        audience.audio = stream.settings;
    }
    if (video) {
        VideoStream stream = ReadVideoStream(video, ValueReader(StreamName(video), file.notes));
        audience.streams |= platform::kContentVideo;
        profile.video_mode = stream.mode;
        profile.non_square_pixels = stream.non_square_pixels;
        profile.interlaced = stream.interlaced;
        audience.video = stream.settings;
        if (!stream.conformance.empty()) audience.properties[kConformance] = stream.conformance;
    }
    NoteLeftOut(root, audio, video, file.notes);
    profile.file_text = std::make_shared<const std::string>(utf8);
    return file;
}

std::string WriteProfile(const ProfileRecord& profile) {
    if (profile.audiences.empty())
        RefuseArgument(fmt::format("The profile \"{}\" has no audience to save", profile.name));
    const AudienceRecord& audience = profile.audiences.front();
    pugi::xml_document document;
    pugi::xml_node root = NeedRoot(document, profile);
    if (AttributeNamed(root, "name").value() != profile.name) Put(root, "name", profile.name);
    PutUnlessUsual(root, "x-minpacketsize", profile.min_packet_bytes, 0);
    PutUnlessUsual(root, "x-maxpacketsize", profile.max_packet_bytes, 0);
    const std::int32_t content = profile.Content();
    if ((content & platform::kContentAudio) != 0)
        WriteAudioStream(NeedStream(root, StreamKind::Audio), {profile.audio_mode, audience.audio});
    if ((content & platform::kContentVideo) != 0) {
        VideoStream video{profile.video_mode, audience.video, profile.non_square_pixels,
                          profile.interlaced, ""};
        const auto target = audience.properties.find(kConformance);
        if (target != audience.properties.end())
            if (const auto* text = std::get_if<std::string>(&target->second))
                video.conformance = *text;
        WriteVideoStream(NeedStream(root, StreamKind::Video), video);
    }
    return XmlText(document);
}

}  // namespace engine::files
