// The sources of a session file's group.
#pragma once

#include <optional>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "engine/files/session_folder.h"
#include "engine/plan/source_record.h"
#include "platform/encoder.h"

namespace engine::files {

struct FoundSource {
    pugi::xml_node node;
    std::optional<platform::SourceType> type;  // none that is known here
};

/// In the order of the file, at whatever depth in the group.
std::vector<FoundSource> FindSources(const pugi::xml_node& group);

/// Throws Error: invalid data for what is no number, not implemented for a scheme that is not read
/// here.
AudioSourceRecord ReadAudioSource(const pugi::xml_node& node, const SessionFolder& folder,
                                  std::vector<std::string>& notes);
VideoSourceRecord ReadVideoSource(const pugi::xml_node& node, const SessionFolder& folder,
                                  std::vector<std::string>& notes);

/// Updates the group's first source of that kind, or adds one.
void WriteAudioSource(pugi::xml_node group, const AudioSourceRecord& source,
                      const SessionFolder& folder);
void WriteVideoSource(pugi::xml_node group, const VideoSourceRecord& source,
                      const SessionFolder& folder);

}  // namespace engine::files
