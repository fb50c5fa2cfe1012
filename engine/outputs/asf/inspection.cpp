#include "engine/outputs/asf/inspection.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "engine/outputs/asf/byte_reader.h"
#include "engine/outputs/asf/guids.h"
#include "platform/error.h"

namespace engine::asf {
namespace {

constexpr std::uint64_t kMostHeaderBytes = 256ULL << 20;

[[noreturn]] void Refuse(platform::ErrorNumber number, const std::string& path,
                         const std::string& reason) {
    throw platform::Error(number, fmt::format("Cannot repair \"{}\": {}", path, reason));
}

class Inspector {
  public:
    explicit Inspector(const std::string& path) : path_(path) {}

    Inspection Run() {
        Open();
        ReadHeader();
        result_.walk = DataWalk(result_.header.videos);
        WalkPackets();
        DropUselessTail();
        Judge();
        return std::move(result_);
    }

  private:
    void Open() {
        namespace fs = std::filesystem;
        std::error_code error;
        const fs::file_status status = fs::status(path_, error);
        if (!fs::exists(status))
            Refuse(platform::kFileNotFound, path_, "it does not exist; check the name");
        if (!fs::is_regular_file(status))
            Refuse(platform::kInvalidArgument, path_, "it is no file; name a file");
        result_.file_bytes = fs::file_size(path_, error);
        in_.open(path_, std::ios::binary);
        if (error || !in_)
            Refuse(platform::kAccessDenied, path_, "it cannot be read; check its permissions");
    }

    // False at an end that comes too early.
    bool Read(std::uint64_t place, std::uint64_t count, std::vector<std::uint8_t>& bytes) {
        if (place > result_.file_bytes || count > result_.file_bytes - place) return false;
        bytes.resize(static_cast<std::size_t>(count));
        if (place != place_) in_.seekg(static_cast<std::streamoff>(place));
        in_.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count));
        if (!in_) Refuse(platform::kUnspecified, path_, "the disk cannot read it");
        place_ = place + count;
        return true;
    }

    void ReadHeader() {
        std::vector<std::uint8_t> bytes;
        if (!Read(0, kObjectHeaderBytes, bytes))
            Refuse(platform::kInvalidData, path_, "it is too short; nothing in it can be saved");
        const std::uint64_t size = HeaderObjectBytes(bytes);
        if (size == 0)
            Refuse(platform::kInvalidData, path_,
                   "it is no Windows Media file (.wmv, .wma, .asf); name another");
        if (size > kMostHeaderBytes || !Read(0, size + kDataHeaderBytes, bytes))
            Refuse(platform::kInvalidData, path_,
                   "it ends within its header; nothing in it can be saved");
        try {
            result_.header = ReadHeaderView(std::move(bytes));
        } catch (const platform::Error& error) {
            Refuse(platform::kInvalidData, path_, error.description());
        }
    }

    std::uint64_t Data() const { return result_.header.bytes.size(); }
    std::uint64_t PacketBytes() const { return result_.header.packet_bytes; }

    // Whether the header says where the data end.
    bool StatesItsData() const {
        const HeaderView& header = result_.header;
        return (header.flags & kBroadcastFlag) == 0 && header.packets == header.data_packets &&
               header.packets < (1ULL << 40) &&
               header.data_size == kDataHeaderBytes + header.packets * PacketBytes();
    }

    void WalkPackets() {
        std::uint64_t count = (result_.file_bytes - Data()) / PacketBytes();
        // A header of a file that is still to be finished says 0.
        const bool stated = StatesItsData() && result_.header.packets > 0;
        if (stated) count = std::min(count, result_.header.packets);
        std::vector<std::uint8_t> bytes;
        PacketFacts facts;
        std::uint64_t unreadable = 0;
        for (std::uint64_t i = 0; i < count; ++i) {
            Read(Data() + i * PacketBytes(), PacketBytes(), bytes);
            if (ReadPacket(bytes, result_.header.streams, facts)) {
                result_.damaged_packets += std::exchange(unreadable, 0);
                result_.walk.Add(facts);
                if (result_.runs.empty() ||
                    result_.runs.back().first + result_.runs.back().count != i)
                    result_.runs.push_back({i, 0});
                ++result_.runs.back().count;
            } else if (!stated && ByteReader(bytes).Id() == guid::kSimpleIndex) {
                break;
            } else {
                ++unreadable;  // the tail's, unless a packet follows
            }
        }
    }

    void DropUselessTail() {
        std::uint64_t left = result_.walk.Totals().packets;
        for (PacketRun& run : result_.runs) {
            run.count = std::min(run.count, left);
            left -= run.count;
        }
        std::erase_if(result_.runs, [](const PacketRun& run) { return run.count == 0; });
    }

    void Judge() {
        const HeaderView& header = result_.header;
        if (!StatesItsData() || header.file_size != result_.file_bytes) return;
        std::uint64_t place = Data() + header.packets * PacketBytes();
        if (place > result_.file_bytes) return;
        result_.indexed = place < result_.file_bytes;
        std::vector<std::uint8_t> bytes;
        while (place < result_.file_bytes) {
            if (!Read(place, kObjectHeaderBytes, bytes)) return;
            ByteReader in(bytes);
            in.Id();
            const std::uint64_t size = in.U64();
            if (size < kObjectHeaderBytes || size > result_.file_bytes - place) return;
            place += size;
        }
        result_.whole = result_.indexed || result_.walk.Totals().key_frames == 0;
    }

    std::string path_;
    std::ifstream in_;
    std::uint64_t place_ = 0;
    Inspection result_;
};

}  // namespace

std::uint64_t Inspection::Seconds100() const {
    const std::int64_t ms =
        walk.Totals().end_ms -
        static_cast<std::int64_t>(std::min<std::uint64_t>(header.preroll_ms, 1U << 31));
    return static_cast<std::uint64_t>(std::max<std::int64_t>(ms, 0)) / 10;
}

Inspection Inspect(const std::string& path) { return Inspector(path).Run(); }

}  // namespace engine::asf
