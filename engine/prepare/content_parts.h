// Reads an optimization definition file: which parts of a sound are speech, and which are not.
#pragma once

#include <string_view>
#include <vector>

#include "engine/plan/voice_content.h"

namespace engine {

/// Each line has a part's begin and end in milliseconds and the content mode in between, 0 to 2:
/// "1000 61500 2". Parts follow each other; there may be empty lines, and those that begin with
/// "#". Throws Error (invalid data) that names the file and the line.
std::vector<ContentPart> ReadContentParts(std::string_view text, std::string_view file);

}  // namespace engine
