// Profile files (.prx) as text, to and from a profile's record.
#pragma once

#include <string>
#include <vector>

#include "engine/plan/profile_record.h"

namespace engine::files {

struct ProfileFile {
    ProfileRecord profile;  // of every content kind, with one audience
    /// What was passed over or held to its range, a line each.
    std::vector<std::string> notes;
};

/// @param utf8  as DecodeText gives it
/// Takes the first audio and the first video stream. Throws Error: invalid data for what is no
/// profile, not implemented for a codec that is not in the catalogue.
ProfileFile ReadProfile(const std::string& utf8);

/// The text of the profile's first audience, with what is unknown in the file that it comes from.
/// Throws Error (invalid argument) when there is none.
std::string WriteProfile(const ProfileRecord& profile);

}  // namespace engine::files
