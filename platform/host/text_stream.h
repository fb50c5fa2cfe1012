// Text files on disk, read line by line or written whole.
#pragma once

#include <memory>
#include <string>

#include "platform/file_system.h"
#include "platform/host/locale_text.h"

namespace platform::host {

/// Opens the host path `path` as FileSystem::OpenTextFile says. A UTF-8 mark at the start of the
/// file is no part of the text. A line past a mebibyte is no text: Error (invalid data).
std::shared_ptr<TextStream> OpenText(const std::string& path, OpenMode mode, bool create,
                                     const LocaleText& encoding);

}  // namespace platform::host
