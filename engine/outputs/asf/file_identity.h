// Whether a name and an open file are the same.
#pragma once

#include <sys/stat.h>

#include <string>

namespace engine::asf {

/// False also when there is nothing of this name, or a link to the file.
inline bool NameLeadsTo(const std::string& path, int descriptor) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace engine::asf
