// Makes a cut-off .wmv, .wma or .asf file whole: header, durations, index.
#pragma once

#include <string>

namespace engine::asf {

/// Works on files of any writer whose packets have one size. Drops what is cut off or damaged,
/// writes the rest with new numbers and a new index beside the file (FILE.repair, or another name
/// where that is taken), reads that back, and only then lets it take the file's place; a failure
/// leaves the file as it was. A file that is whole is not written. NAME.part takes the name NAME in
/// the end, unless a file has it. A link, a FIFO or anything else but a regular file is refused
/// (invalid argument) without waiting for it.
///
/// Returns lines for people: what was found, what was written. Throws platform::Error: disk full or
/// unspecified when the writing failed, else when there is nothing to repair it from (file not
/// found, access denied, invalid data, busy while a run writes it).
std::string Repair(const std::string& path);

}  // namespace engine::asf
