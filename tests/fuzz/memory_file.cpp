#include "fuzz/memory_file.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fuzz {
namespace {

namespace fs = std::filesystem;

struct Folder {
    Folder() : path("/dev/shm/fuzz-" + std::to_string(::getpid())) { fs::create_directories(path); }
    ~Folder() {
        std::error_code none;
        fs::remove_all(path, none);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string path;
};

}  // namespace

const std::string& MemoryFolder() {
    static const Folder folder;
    return folder.path;
}

std::string MemoryFile(const std::string& name, std::span<const std::uint8_t> bytes) {
    std::string path = MemoryFolder() + "/" + name;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) std::abort();
    return path;
}

}  // namespace fuzz
