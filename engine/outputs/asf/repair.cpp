#include "engine/outputs/asf/repair.h"

#include <fmt/format.h>

#include <filesystem>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

#include "engine/outputs/asf/byte_reader.h"
#include "engine/outputs/asf/byte_writer.h"
#include "engine/outputs/asf/free_name.h"
#include "engine/outputs/asf/header.h"
#include "engine/outputs/asf/host_file.h"
#include "engine/outputs/asf/inspection.h"
#include "engine/outputs/asf/part_name.h"
#include "platform/error.h"

namespace engine::asf {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCopyBytes = 1 << 20;
constexpr int kMostNames = 100;

void Put(std::vector<std::uint8_t>& bytes, std::size_t place, std::uint64_t value,
         std::size_t width = 8) {
    for (std::size_t i = 0; i < width; ++i)
        bytes[place + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

std::vector<std::uint8_t> IndexBytes(Inspection& found, const Guid& file_id) {
    ByteWriter out;
    for (auto& [stream, index] : found.walk.Indexes())
        index.AppendTo(out, file_id, found.walk.Totals().last_pts_ms);
    return {out.bytes().begin(), out.bytes().end()};
}

/// The header with the numbers of what was found. Its length and all else stay as they are.
std::vector<std::uint8_t> NewHeader(const Inspection& found, const Guid& file_id,
                                    std::uint64_t index_bytes) {
    using Place = PropertiesPlace;
    const WalkTotals& totals = found.walk.Totals();
    const HeaderView& header = found.header;
    const std::uint64_t packet_bytes = totals.packets * header.packet_bytes;
    ByteWriter id;
    id.Id(file_id);

    std::vector<std::uint8_t> bytes = header.bytes;
    const auto put_id = [&](std::size_t place) {
        std::copy(id.bytes().begin(), id.bytes().end(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(place));
    };
    const std::size_t properties = header.properties;
    const auto ticks = [](std::int64_t ms) {
        return static_cast<std::uint64_t>(ms * Ticks::kPerMillisecond);
    };
    put_id(properties + Place::kFileId);
    Put(bytes, properties + Place::kFileSize, bytes.size() + packet_bytes + index_bytes);
    Put(bytes, properties + Place::kPackets, totals.packets);
    Put(bytes, properties + Place::kPlayDuration, ticks(totals.end_ms));
    Put(bytes, properties + Place::kSendDuration, ticks(totals.send_end_ms));
    Put(bytes, properties + Place::kFlags, (header.flags & ~kBroadcastFlag) | kSeekableFlag, 4);
    const std::size_t data = header.DataObject();
    Put(bytes, data + 16, kDataHeaderBytes + packet_bytes);
    put_id(data + 24);
    Put(bytes, data + 40, totals.packets);
    return bytes;
}

void CopyPackets(const InputFile& from, const Inspection& found, HostFile& to) {
    std::vector<std::uint8_t> buffer(kCopyBytes);
    for (const PacketRun& run : found.runs) {
        std::uint64_t place = found.header.bytes.size() + run.first * found.header.packet_bytes;
        std::uint64_t left = run.count * found.header.packet_bytes;
        while (left > 0) {
            const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, kCopyBytes));
            const auto piece = std::span(buffer).first(count);
            from.Read(place, piece);
            to.Append(piece);
            place += count;
            left -= count;
        }
    }
}

/// Every entry of a new index leads to packets that are there.
bool IndexesHold(const std::vector<std::uint8_t>& indexes, std::uint64_t packets) {
    ByteReader in(indexes);
    while (in.Left() > 0) {
        in.Skip(kObjectHeaderBytes + 16 + 8 + 4);
        const std::uint32_t entries = in.U32();
        for (std::uint32_t i = 0; i < entries && !in.Failed(); ++i) {
            const std::uint64_t first = in.U32();
            if (first + in.U16() > packets) return false;
        }
        if (in.Failed()) return false;
    }
    return true;
}

std::vector<std::uint8_t> TailOf(const InputFile& file, std::uint64_t place) {
    std::vector<std::uint8_t> bytes(file.Bytes() - std::min(place, file.Bytes()));
    file.Read(file.Bytes() - bytes.size(), bytes);
    return bytes;
}

/// Reads what was written as any file is read; what it says of itself must be what was meant.
void ReadBack(const std::string& path, const Inspection& meant,
              const std::vector<std::uint8_t>& indexes) {
    const InputFile file(path);
    const Inspection result = Inspect(file);
    const std::uint64_t data_end =
        meant.header.bytes.size() + meant.walk.Totals().packets * meant.header.packet_bytes;
    const bool good = result.whole && result.damaged_packets == 0 &&
                      result.walk.Totals() == meant.walk.Totals() &&
                      result.header.packets == meant.walk.Totals().packets &&
                      TailOf(file, data_end) == indexes &&
                      IndexesHold(indexes, result.header.packets);
    if (!good)
        throw platform::Error(
            platform::kUnspecified,
            fmt::format("\"{}\" does not read back as it was written; check the disk", path));
}

std::string SecondsText(const Inspection& inspection) {
    const std::uint64_t hundredths = inspection.Seconds100();
    return fmt::format("{}.{:02}", hundredths / 100, hundredths % 100);
}

std::string FoundText(const std::string& path, const Inspection& found) {
    const std::uint64_t packets = found.whole ? found.header.packets : found.walk.Totals().packets;
    const std::uint64_t kept = found.header.bytes.size() + packets * found.header.packet_bytes;
    std::string text = fmt::format("{}: {} packets, {} seconds", path, packets, SecondsText(found));
    if (found.damaged_packets > 0)
        text += fmt::format(", {} damaged packets between them", found.damaged_packets);
    if (found.whole) return text + ", whole";
    const std::uint64_t dropped =
        found.file_bytes - kept - found.damaged_packets * found.header.packet_bytes;
    return text + fmt::format(", not finished; {} bytes behind them are dropped", dropped);
}

/// The name that `path` has in the end, and what there is to say about it.
std::string Publish(const std::string& path, std::string& lines) {
    std::string target = TargetOfPart(path);
    if (target.empty()) return path;
    if (RenameUnlessTaken(path, target)) return target;
    lines += fmt::format("{} exists, so the file stays {}\n", target, path);
    return path;
}

/// A name beside the file that nothing has.
std::string FreeName(const std::string& path) {
    for (int number = 0; number < kMostNames; ++number) {
        const std::string suffix = number == 0 ? ".repair" : fmt::format("-{}.repair", number);
        std::string name = SiblingName(path, suffix);
        std::error_code none;
        if (!fs::exists(fs::symlink_status(name, none))) return name;
    }
    throw platform::Error(
        platform::kFileExists,
        fmt::format("Cannot repair \"{0}\": \"{1}\" and {2} more of such names are taken; remove "
                    "those files",
                    path, SiblingName(path, ".repair"), kMostNames - 1));
}

void RequireName(const InputFile& file) {
    if (file.HasName()) return;
    throw platform::Error(
        platform::kFileNotFound,
        fmt::format("Cannot repair \"{}\": it was removed or replaced meanwhile; start again",
                    file.path()));
}

void WriteRepaired(const InputFile& file, Inspection& found, std::string& lines) {
    const std::string& path = file.path();
    const bool without_id = found.header.file_id == Guid{};
    const Guid file_id = without_id ? RandomFileId() : found.header.file_id;
    const std::vector<std::uint8_t> indexes = IndexBytes(found, file_id);
    const std::string beside = FreeName(path);
    HostFile out(beside, path, Before::Nothing);
    try {
        out.Append(NewHeader(found, file_id, indexes.size()));
        CopyPackets(file, found, out);
        out.Append(indexes);
        out.Sync();
        ReadBack(beside, found, indexes);
        out.SetPermissions(file.Permissions());
        RequireName(file);
        out.Rename(path);
    } catch (const std::exception&) {
        std::error_code none;
        if (out.HasName()) fs::remove(beside, none);
        throw;
    }
    const std::uint64_t bytes = fs::file_size(path);
    const std::string name = Publish(path, lines);
    lines += fmt::format("Written: {}, {} bytes, {} seconds, {}\n", name, bytes, SecondsText(found),
                         indexes.empty() ? "no index needed" : "with a new index");
}

}  // namespace

std::string Repair(const std::string& path) {
    const InputFile file(path);
    file.Lock();
    Inspection found = Inspect(file);
    std::string lines = FoundText(path, found) + "\n";
    if (found.whole) {
        RequireName(file);
        const std::string last = Publish(path, lines);
        lines += last == path ? "Left as it is\n" : fmt::format("Renamed to {}\n", last);
        return lines;
    }
    if (found.walk.Totals().packets == 0)
        throw platform::Error(platform::kInvalidData,
                              fmt::format("Cannot repair \"{}\": it holds no whole frame; nothing "
                                          "in it can be saved",
                                          path));
    try {
        WriteRepaired(file, found, lines);
    } catch (const fs::filesystem_error& failure) {
        FailToWrite(path, failure.code().default_error_condition().value());
    }
    return lines;
}

}  // namespace engine::asf
