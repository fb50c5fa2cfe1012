// The header reader, the packet reader and the inspection of a whole file, on any bytes.
#include <algorithm>
#include <vector>

#include "engine/outputs/asf/header_reader.h"
#include "engine/outputs/asf/inspection.h"
#include "engine/outputs/asf/packet_reader.h"
#include "fuzz/memory_file.h"
#include "platform/error.h"

namespace {

using engine::asf::kDataHeaderBytes;
using engine::asf::kObjectHeaderBytes;

/// Each part by itself, so that bytes need no file around them to be reached.
void ReadParts(std::span<const std::uint8_t> bytes) {
    engine::asf::PacketFacts facts;
    engine::asf::ReadPacket(bytes, std::bitset<128>(6), facts);
    if (bytes.size() < kObjectHeaderBytes) return;
    const std::uint64_t header = engine::asf::HeaderObjectBytes(bytes.first(kObjectHeaderBytes));
    if (header == 0) return;
    const std::size_t taken = std::min<std::uint64_t>(header, bytes.size());
    std::vector<std::uint8_t> copy(bytes.begin(),
                                   bytes.begin() + static_cast<std::ptrdiff_t>(taken));
    copy.resize(copy.size() + kDataHeaderBytes);
    engine::asf::ReadHeaderView(std::move(copy));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        ReadParts({data, size});
    } catch (const platform::Error&) {
        // refused
    }
    try {
        const engine::asf::InputFile file(fuzz::MemoryFile("any.wmv", {data, size}));
        engine::asf::Inspect(file).Seconds100();
    } catch (const platform::Error&) {
        // refused
    }
    return 0;
}
