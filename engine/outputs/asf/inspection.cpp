#include "engine/outputs/asf/inspection.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "engine/outputs/asf/byte_reader.h"
#include "engine/outputs/asf/credible_times.h"
#include "engine/outputs/asf/guids.h"
#include "platform/error.h"

namespace engine::asf {
namespace {

constexpr std::uint64_t kMostHeaderBytes = 256ULL << 20;
constexpr int kMostPasses = 8;

class Inspector {
  public:
    explicit Inspector(const InputFile& file) : file_(file) {}

    Inspection Run() {
        result_.file_bytes = file_.Bytes();
        ReadHeader();
        WalkPackets();
        Judge();
        return std::move(result_);
    }

  private:
    // False at an end that comes too early.
    bool Read(std::uint64_t place, std::uint64_t count, std::vector<std::uint8_t>& bytes) {
        if (place > result_.file_bytes || count > result_.file_bytes - place) return false;
        bytes.resize(static_cast<std::size_t>(count));
        file_.Read(place, bytes);
        return true;
    }

    [[noreturn]] void RefuseData(const std::string& reason) const {
        throw platform::Error(platform::kInvalidData,
                              fmt::format("Cannot repair \"{}\": {}", file_.path(), reason));
    }

    void ReadHeader() {
        std::vector<std::uint8_t> bytes;
        if (!Read(0, kObjectHeaderBytes, bytes))
            RefuseData("it is too short; nothing in it can be saved");
        const std::uint64_t size = HeaderObjectBytes(bytes);
        if (size == 0) RefuseData("it is no Windows Media file (.wmv, .wma, .asf); name another");
        if (size > kMostHeaderBytes || !Read(0, size + kDataHeaderBytes, bytes))
            RefuseData("it ends within its header; nothing in it can be saved");
        try {
            result_.header = ReadHeaderView(std::move(bytes));
        } catch (const platform::Error& error) {
            RefuseData(error.description());
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

    // What a packet is believed for may itself be left out, so what is left is walked again until
    // all of it is believed.
    void WalkPackets() {
        std::uint64_t count = (result_.file_bytes - Data()) / PacketBytes();
        // A header of a file that is still to be finished says 0.
        stated_ = StatesItsData() && result_.header.packets > 0;
        if (stated_) count = std::min(count, result_.header.packets);
        std::vector<PacketRun> from = {{0, count}};
        for (int pass = 0; WalkOnce(from); ++pass) {
            if (pass == kMostPasses) RefuseData("its times contradict each other");
            from = result_.runs;
        }
        result_.damaged_packets = 0;
        std::uint64_t end = 0;
        for (const PacketRun& run : result_.runs) {
            result_.damaged_packets += run.first - end;
            end = run.first + run.count;
        }
    }

    // True: packets were left out on which others leant.
    bool WalkOnce(const std::vector<PacketRun>& from) {
        result_.walk = DataWalk(result_.header.videos);
        result_.runs.clear();
        CredibleTimes times(result_.header.preroll_ms);
        std::uint64_t readable = 0;
        std::uint64_t place = 0;
        PacketFacts packet;
        PacketFacts next;
        const auto take = [&](const PacketFacts* following) {
            if (!times.Take(packet, following)) return;
            result_.walk.Add(packet);
            if (result_.runs.empty() ||
                result_.runs.back().first + result_.runs.back().count != place)
                result_.runs.push_back({place, 0});
            ++result_.runs.back().count;
        };
        ForEachReadable(from, next, [&](std::uint64_t its_place) {
            if (readable++ > 0) take(&next);
            std::swap(packet, next);
            place = its_place;
        });
        if (readable > 0) take(nullptr);
        DropUselessTail();
        return times.LeantOnNext() && result_.walk.Totals().packets < readable;
    }

    template <typename Step>
    void ForEachReadable(const std::vector<PacketRun>& from, PacketFacts& facts, const Step& step) {
        std::vector<std::uint8_t> bytes;
        for (const PacketRun& run : from) {
            for (std::uint64_t i = run.first; i < run.first + run.count; ++i) {
                Read(Data() + i * PacketBytes(), PacketBytes(), bytes);
                if (ReadPacket(bytes, result_.header.streams, facts)) {
                    step(i);
                } else if (!stated_ && ByteReader(bytes).Id() == guid::kSimpleIndex) {
                    return;
                }
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

    const InputFile& file_;
    bool stated_ = false;  // the header says where the data end
    Inspection result_;
};

}  // namespace

std::uint64_t Inspection::Seconds100() const {
    const std::int64_t ms =
        walk.Totals().end_ms -
        static_cast<std::int64_t>(std::min<std::uint64_t>(header.preroll_ms, 1U << 31));
    return static_cast<std::uint64_t>(std::max<std::int64_t>(ms, 0)) / 10;
}

Inspection Inspect(const InputFile& file) { return Inspector(file).Run(); }

}  // namespace engine::asf
