// How large a recording has become, and how much room is left for it.
#pragma once

#include <QString>
#include <cstdint>
#include <optional>

#include "platform/run_report.h"

namespace platform::host {

/// Bytes that are free where the recording is written; nothing where that is not known.
std::optional<std::int64_t> FreeBytes(const RunProgress& progress);

/// "3.4 MB, 41 GB free"; "" for what has no output file.
QString RecordedText(const RunProgress& progress, std::optional<std::int64_t> free_bytes);

/// Whether so little is free that a person should know.
bool IsScarce(std::int64_t free_bytes);

}  // namespace platform::host
