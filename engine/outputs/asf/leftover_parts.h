// Parts of outputs whose run was killed.
#pragma once

#include <string>
#include <vector>

namespace engine {

/// Names the parts in the output's folder that nobody writes any more, but its own, and what can be
/// done with them: a line each, few lines. A folder that cannot be read has none.
std::vector<std::string> LeftoverNotes(const std::string& output_path);

/// Gives a leftover part of this output a free name beside it ("a.wmv.part" becomes
/// "a-1.wmv.part"), so that a new part does not take its place. Where that is not possible it stays
/// as it is.
void SetLeftoverAside(const std::string& output_path);

}  // namespace engine
