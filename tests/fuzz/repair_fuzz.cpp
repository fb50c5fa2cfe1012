// The repair of any bytes: what it calls written is whole, opens, and is left alone the next time.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "engine/outputs/asf/repair.h"
#include "fuzz/memory_file.h"
#include "platform/error.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace {

namespace fs = std::filesystem;

void Require(bool holds, const char* what, const std::string& lines) {
    if (holds) return;
    std::fprintf(stderr, "%s\n%s\n", what, lines.c_str());
    std::abort();
}

/// Whether a player's demuxer opens it and comes to its end.
bool Opens(const std::string& path) {
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0) return false;
    const auto close = [](AVFormatContext* context) { avformat_close_input(&context); };
    const std::unique_ptr<AVFormatContext, decltype(close)> context(opened, close);
    return context->nb_streams > 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    av_log_set_level(AV_LOG_QUIET);
    const std::string part = fuzz::MemoryFile("any.wmv.part", {data, size});
    const std::string whole = fuzz::MemoryFolder() + "/any.wmv";
    fs::remove(whole);
    std::string lines;
    try {
        lines = engine::asf::Repair(part);
    } catch (const platform::Error& error) {
        Require(fs::file_size(part) == size && !fs::exists(whole), "a refused file is changed",
                error.description());
        return 0;
    }
    Require(fs::exists(whole), "nothing has the final name", lines);
    Require(!fs::exists(part + ".repair"), "the copy is left behind", lines);
    const bool written = lines.find("Written") != std::string::npos;
    Require(!written || Opens(whole), "what is called written does not open", lines);
    const std::string again = engine::asf::Repair(whole);
    Require(again.find("Left as it is") != std::string::npos, "what is repaired is not whole",
            again);
    return 0;
}
