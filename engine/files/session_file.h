// Session files (.wme) as text, to and from a session's record.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/files/session_folder.h"
#include "engine/plan/session_record.h"

namespace engine::files {

struct SessionFile {
    /// One group, whose inputs are named but not opened. A profile that the file only names is one
    /// without audiences.
    SessionRecord session;
    /// What was passed over or held to its range, a line each.
    std::vector<std::string> notes;
    std::shared_ptr<const std::string> text;  // whose unknown parts are written back
};

/// Takes the first group and its first source of each kind; names of elements and attributes count
/// without regard to case, and elements of others around them are passed. Throws Error (invalid
/// data) for what is no session, what a profile throws.
SessionFile ReadSession(const std::string& utf8, const SessionFolder& folder);

/// The text of a session of one group. Throws Error (invalid argument) for one that has no group or
/// no profile.
/// @param loaded  the file that the session comes from; null when it was made here
std::string WriteSession(const SessionRecord& session, const SessionFolder& folder,
                         const std::string* loaded);

}  // namespace engine::files
