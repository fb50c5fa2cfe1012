// Files that were cut at every kind of place, by this writer and by another, made whole again.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <bitset>
#include <filesystem>
#include <fstream>
#include <functional>

#include "clips.h"
#include "engine/outputs/asf/asf_file.h"
#include "engine/outputs/asf/packet_reader.h"
#include "engine/outputs/asf/repair.h"
#include "support/asf_reader.h"
#include "support/error_of.h"
#include "support/file_size_limit.h"

namespace engine::asf {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using testing::HasSubstr;

constexpr std::uint32_t kPacketBytes = 1400;

void WriteBytes(const std::string& path, const Bytes& bytes, std::size_t count) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(count));
}

/// 0 when it is repaired.
std::uint32_t RepairError(const std::string& path, const std::string& named) {
    return test_support::ErrorNumber([&] { Repair(path); }, {named});
}

void ExpectUntouched(const std::string& path, const Bytes& before) {
    EXPECT_TRUE(asf_reader::FileBytes(path) == before) << path;
    EXPECT_FALSE(fs::exists(path + ".repair"));
}

/// A recording that was never finished, and the same frames finished.
struct Written {
    Bytes recording, finished;
    std::size_t data = 0;  // where the packets begin
};

Written Write(const clips::Folder& scratch, int milliseconds) {
    clips::Clip clip = clips::MadeUp(milliseconds);
    clip.header.min_packet_bytes = clip.header.max_packet_bytes = kPacketBytes;
    Written written;
    {
        AsfFile sink(scratch.Path("r.wmv"));
        clips::WriteAll(sink, clip);
    }
    written.recording = asf_reader::FileBytes(scratch.Path("r.wmv.part"));
    clips::WriteFile(scratch.Path("f.wmv"), clip, kPacketBytes);
    written.finished = asf_reader::FileBytes(scratch.Path("f.wmv"));
    written.data = asf_reader::ReadHeader(written.recording).bytes + 50;
    return written;
}

/// Repairs a file and compares it with what the independent reader finds in its packets.
void ExpectRepaired(const std::string& path, const Bytes& data_of_cut) {
    const asf_reader::File cut = asf_reader::Read(data_of_cut);
    std::size_t packets = 0;
    for (const asf_reader::MediaObject& object : cut.objects)
        packets = std::max(packets, object.last_packet + 1);
    ASSERT_EQ(RepairError(path, ""), 0U);
    EXPECT_FALSE(fs::exists(path + ".repair"));
    const asf_reader::File file = asf_reader::ReadFile(path);  // checks all sizes and counts
    EXPECT_EQ(file.header.flags, 2U);
    EXPECT_EQ(file.packets.size(), packets);
    ASSERT_EQ(file.objects.size(), cut.objects.size());
    std::uint64_t last_ms = 0;
    for (std::size_t i = 0; i < file.objects.size(); ++i) {
        ASSERT_EQ(file.objects[i].bytes, cut.objects[i].bytes);
        last_ms = std::max<std::uint64_t>(last_ms, file.objects[i].presentation_ms);
    }
    EXPECT_GE(file.header.play_duration, last_ms * 10'000);
    EXPECT_LE(file.header.play_duration, (last_ms + 200) * 10'000);
    const bool has_key_frame =
        std::any_of(file.objects.begin(), file.objects.end(),
                    [](const auto& object) { return object.stream == 2 && object.key; });
    ASSERT_EQ(file.indexes.size(), has_key_frame ? 1U : 0U);
    if (!has_key_frame) return;
    const asf_reader::Index& index = file.indexes[0];
    EXPECT_EQ(index.entries.size(), last_ms / 1000 + 1);
    for (std::size_t second = 0; second < index.entries.size(); ++second) {
        // The last key frame that is not later, else the first.
        const asf_reader::MediaObject* expected = nullptr;
        for (const asf_reader::MediaObject& object : file.objects)
            if (object.stream == 2 && object.key &&
                (expected == nullptr || object.presentation_ms <= second * 1000))
                expected = &object;
        EXPECT_EQ(index.entries[second].packet, expected->first_packet) << second;
    }
}

TEST(Repair, ACutFileIsWholeUpToTheCut) {
    const clips::Folder scratch;
    const Written written = Write(scratch, 6000);
    Bytes indexed = written.finished;  // the index is there, the header's numbers are not
    std::copy_n(written.recording.begin(), written.data, indexed.begin());
    const std::size_t recorded = written.recording.size();
    const std::size_t data_end =
        written.data + asf_reader::ReadHeader(written.finished).packets * kPacketBytes;
    struct Cut {
        const char* why;
        const Bytes& bytes;
        std::size_t length;
    };
    std::vector<Cut> cuts = {
        {"killed", written.recording, recorded},
        {"soon after the first key frame", written.recording, written.data + 15 * kPacketBytes + 1},
        {"between packets", written.recording, written.data + 40 * kPacketBytes},
        {"one byte of a packet is missing", written.recording, recorded - 1},
        {"finished, then cut in its data", written.finished, written.data + 50 * kPacketBytes + 7},
        {"finished, then cut before its index", written.finished, data_end},
        {"finished, cut by one byte", written.finished, written.finished.size() - 1},
        {"killed before the numbers", indexed, indexed.size()},
        {"killed in the index", indexed, indexed.size() - 30},
        {"killed at the index's first bytes", indexed, data_end + 5},
    };
    for (std::size_t length = written.data + 16 * kPacketBytes; length < recorded; length += 5003)
        cuts.push_back({"anywhere", written.recording, length});
    const std::string path = scratch.Path("cut.wmv");
    for (const Cut& cut : cuts) {
        SCOPED_TRACE(std::string(cut.why) + " " + std::to_string(cut.length));
        WriteBytes(path, cut.bytes, cut.length);
        const std::size_t whole = (std::min(cut.length, data_end) - written.data) / kPacketBytes;
        const auto packets_end = static_cast<std::ptrdiff_t>(written.data + whole * kPacketBytes);
        ExpectRepaired(path, {indexed.begin(), indexed.begin() + packets_end});
    }
}

TEST(Repair, WhatItCannotSaveStaysAsItIs) {
    const clips::Folder scratch;
    const Written written = Write(scratch, 1000);
    Bytes no_size = written.recording;  // the packets' sizes
    std::fill_n(no_size.begin() + 30 + 24 + 68, 4, std::uint8_t{0});
    const Bytes text(4000, 'a');
    struct Row {
        const char* why;
        const Bytes& bytes;
        std::size_t length;
        const char* said;
    };
    const Row rows[] = {
        {"empty", text, 0, "too short"},
        {"another kind of file", text, text.size(), "no Windows Media"},
        {"cut in the header", written.recording, 700, "within its header"},
        {"cut in the data's header", written.recording, written.data - 1, "within its header"},
        {"no packet", written.recording, written.data, "no whole frame"},
        {"half a packet", written.recording, written.data + 700, "no whole frame"},
        {"packets of no size", no_size, no_size.size(), "no single size"},
    };
    const std::string path = scratch.Path("x.wmv");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        WriteBytes(path, row.bytes, row.length);
        const Bytes before = asf_reader::FileBytes(path);
        EXPECT_EQ(RepairError(path, row.said), platform::kInvalidData);
        EXPECT_EQ(RepairError(path, path), platform::kInvalidData);
        ExpectUntouched(path, before);
    }
    EXPECT_EQ(RepairError(scratch.Path("absent.wmv"), "absent"), platform::kFileNotFound);
    EXPECT_EQ(RepairError(scratch.Path("."), "no file"), platform::kInvalidArgument);

    WriteBytes(path, written.recording, written.recording.size());
    {
        const FileSizeLimit disk(written.data + 2 * kPacketBytes);
        EXPECT_EQ(RepairError(path, path), platform::kDiskFull);
    }
    ExpectUntouched(path, written.recording);
}

TEST(Repair, OnlyAFileItselfIsRepaired) {
    const clips::Folder scratch;
    const Written written = Write(scratch, 1000);
    const std::string file = scratch.Path("cut.wmv");
    const std::string link = scratch.Path("link.wmv.part");
    WriteBytes(file, written.recording, written.recording.size());
    fs::create_symlink(file, link);
    EXPECT_EQ(RepairError(link, "symbolic link"), platform::kInvalidArgument);
    EXPECT_TRUE(fs::is_symlink(link));
    ExpectUntouched(file, written.recording);
    const std::string fifo = scratch.Path("fifo.wmv.part");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(RepairError(fifo, "no file"), platform::kInvalidArgument);
}

TEST(Repair, WhatHasTheNameOfTheCopyStays) {
    const clips::Folder scratch;
    const Written written = Write(scratch, 1000);
    const std::string part = scratch.Path("x.wmv.part");
    const Bytes older(100, 'o');
    WriteBytes(part + ".repair", older, older.size());
    fs::create_symlink(scratch.Path("nothing"), part + "-1.repair");
    WriteBytes(part, written.recording, written.recording.size());
    fs::permissions(part, fs::perms(0640));
    EXPECT_EQ(RepairError(part, ""), 0U);
    EXPECT_EQ(asf_reader::ReadFile(scratch.Path("x.wmv")).header.flags, 2U);
    EXPECT_EQ(fs::status(scratch.Path("x.wmv")).permissions(), fs::perms(0640));
    EXPECT_TRUE(asf_reader::FileBytes(part + ".repair") == older);
    EXPECT_FALSE(fs::exists(scratch.Path("nothing")));
    EXPECT_FALSE(fs::exists(part + "-2.repair"));
}

TEST(Repair, NamesOfEveryLength) {
    const clips::Folder scratch;
    const Written written = Write(scratch, 1000);
    for (std::size_t length = 244; length <= 255; ++length) {
        const std::string path = scratch.Path(std::string(length - 4, 'n') + ".wmv");
        WriteBytes(path, written.recording, written.recording.size());
        EXPECT_EQ(RepairError(path, ""), 0U) << length;
        EXPECT_EQ(asf_reader::ReadFile(path).header.flags, 2U);
    }
}

TEST(Repair, AWholeFileIsLeftAlone) {
    const clips::Folder scratch;
    const Written written = Write(scratch, 3000);
    const std::string path = scratch.Path("f.wmv");
    const auto changed = fs::last_write_time(path);
    EXPECT_THAT(Repair(path), HasSubstr("Left as it is"));
    ExpectUntouched(path, written.finished);
    EXPECT_EQ(fs::last_write_time(path), changed);

    WriteBytes(path, written.recording, written.recording.size());
    EXPECT_THAT(Repair(path), HasSubstr("Written"));
    const Bytes repaired = asf_reader::FileBytes(path);
    EXPECT_THAT(Repair(path), HasSubstr("Left as it is")) << "it holds its own result for whole";
    ExpectUntouched(path, repaired);
}

TEST(Repair, APartTakesItsNameWhenThatIsFree) {
    const clips::Folder scratch;
    const Written written = Write(scratch, 2000);
    const std::string path = scratch.Path("a.wmv");
    const std::string part = path + ".part";
    for (const Bytes* bytes : {&written.recording, &written.finished}) {
        fs::remove(path);
        WriteBytes(part, *bytes, bytes->size());
        EXPECT_THAT(Repair(part), HasSubstr(path + (bytes == &written.recording ? "," : "\n")));
        EXPECT_FALSE(fs::exists(part));
        const Bytes result = asf_reader::FileBytes(path);

        WriteBytes(part, *bytes, bytes->size());
        EXPECT_THAT(Repair(part), HasSubstr(path + " exists"));
        EXPECT_EQ(asf_reader::ReadFile(part).header.flags, 2U);
        EXPECT_TRUE(asf_reader::FileBytes(path) == result);
    }
    AsfFile running(path);
    clips::WriteAll(running, clips::MadeUp(1000));
    EXPECT_EQ(RepairError(part, part), platform::kBusy);
}

TEST(Repair, DamagedPacketsAreLeftOutAndTheRestIsKept) {
    const clips::Folder scratch;
    const Written written = Write(scratch, 6000);
    const std::size_t packets = (written.recording.size() - written.data) / kPacketBytes;
    Bytes holed = written.recording;  // what a crashed system leaves of blocks it never wrote
    std::fill_n(holed.begin() + static_cast<std::ptrdiff_t>(written.data + 20 * kPacketBytes),
                3 * kPacketBytes, std::uint8_t{0});
    const std::string path = scratch.Path("a.wmv");
    WriteBytes(path, holed, holed.size());
    EXPECT_THAT(Repair(path), HasSubstr("3 damaged packets"));
    const asf_reader::Header header = asf_reader::ReadHeader(asf_reader::FileBytes(path));
    EXPECT_EQ(header.packets, packets - 3);
    EXPECT_NEAR(static_cast<double>(header.play_duration) / 1e7, 11.0, 0.2);
}

TEST(Repair, TimesThatLeapAreNoLength) {
    const clips::Folder scratch;
    const Written written = Write(scratch, 6000);
    const asf_reader::File whole =
        asf_reader::Read({written.finished.begin(), written.finished.end()});
    const std::size_t packets = (written.recording.size() - written.data) / kPacketBytes;
    const asf_reader::MediaObject& object = whole.objects[whole.objects.size() / 2];
    Bytes time;
    for (int shift = 0; shift < 32; shift += 8)
        time.push_back(static_cast<std::uint8_t>(object.presentation_ms >> shift));
    const std::string path = scratch.Path("leap.wmv");
    for (const int byte : {2, 3}) {
        Bytes bytes = written.recording;
        const auto packet = bytes.begin() + static_cast<std::ptrdiff_t>(
                                                written.data + object.first_packet * kPacketBytes);
        const auto place = std::search(packet, packet + kPacketBytes, time.begin(), time.end());
        ASSERT_NE(place, packet + kPacketBytes);
        place[byte] ^= 0x20;  // 35 minutes, 6 days
        WriteBytes(path, bytes, bytes.size());
        EXPECT_THAT(Repair(path), HasSubstr("1 damaged packet")) << byte;
        const asf_reader::Header header = asf_reader::ReadHeader(asf_reader::FileBytes(path));
        EXPECT_EQ(header.packets, packets - 1);
        EXPECT_NEAR(static_cast<double>(header.play_duration) / 1e7, 11.0, 0.3);
    }

    // Frames that really lie apart are kept.
    clips::Clip slides = clips::MadeUp(6000);
    slides.header.min_packet_bytes = slides.header.max_packet_bytes = kPacketBytes;
    for (clips::Frame& frame : slides.frames)
        for (Ticks* each : {&frame.pts, &frame.dts}) each->count *= 200;
    {
        AsfFile sink(scratch.Path("slides.wmv"));
        clips::WriteAll(sink, slides);
    }
    const std::string part = scratch.Path("slides.wmv.part");
    EXPECT_THAT(Repair(part), testing::Not(HasSubstr("damaged")));
    const std::string slides_path = scratch.Path("slides.wmv");
    EXPECT_GT(asf_reader::ReadHeader(asf_reader::FileBytes(slides_path)).play_duration,
              1'150ULL * 10'000'000);
}

TEST(Repair, ADamagedDescriptionOfAStreamIsRefused) {
    const clips::Folder scratch;
    const Written written = Write(scratch, 1000);
    const Bytes audio_kind = {0x40, 0x9E, 0x69, 0xF8, 0x4D, 0x5B};
    const Bytes video_kind = {0xC0, 0xEF, 0x19, 0xBC, 0x4D, 0x5B};
    constexpr std::ptrdiff_t kLengths = 40;  // from the kind
    constexpr std::ptrdiff_t kFormat = 54;
    struct Row {
        const char* why;
        const Bytes& kind;
        std::ptrdiff_t place;
        std::uint8_t flipped;
        const char* said;
    };
    const Row rows[] = {
        {"the kind of the audio", audio_kind, 9, 0x10, "of a kind"},
        {"the kind of the video", video_kind, 0, 0x01, "of a kind"},
        {"the length of the audio's format", audio_kind, kLengths, 0xFF, "cut"},
        {"the length of the video's format", video_kind, kLengths + 1, 0x10, "cut"},
        {"channels", audio_kind, kFormat + 3, 0x80, "audio is damaged"},
        {"samples a second", audio_kind, kFormat + 7, 0x01, "audio is damaged"},
        {"the bitmap's width", video_kind, kFormat + 11 + 6, 0x40, "video is damaged"},
        {"the bitmap's height", video_kind, kFormat + 11 + 10, 0x40, "video is damaged"},
        {"the codec's name", video_kind, kFormat + 11 + 16, 0x80, "video is damaged"},
        {"the bitmap's length", video_kind, kFormat + 11, 0x08, "video is cut"},
    };
    const std::string path = scratch.Path("x.wmv");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        Bytes bytes = written.recording;
        const auto kind = std::search(bytes.begin(), bytes.end(), row.kind.begin(), row.kind.end());
        ASSERT_NE(kind, bytes.end());
        kind[row.place] ^= row.flipped;
        WriteBytes(path, bytes, bytes.size());
        EXPECT_EQ(RepairError(path, row.said), platform::kInvalidData);
        ExpectUntouched(path, bytes);
    }
}

TEST(Repair, FilesOfAnotherWriter) {
    const clips::Folder scratch;
    const std::string source =
        "-f lavfi -i testsrc2=s=176x144:r=25 -f lavfi -i sine=440:r=44100 -t 8 -c:v wmv2 -g 25 "
        "-c:a wmav2 ";
    clips::Ffmpeg(source, scratch.Path("whole.wmv"));
    clips::Ffmpeg(source + "-packet_size 576", scratch.Path("small.wmv"));
    clips::Ffmpeg(source + "-f asf - >", scratch.Path("piped.wmv"));
    clips::Ffmpeg("-f lavfi -i sine=440:r=44100 -t 8 -c:a wmav2", scratch.Path("sound.wma"));
    const Bytes whole = asf_reader::FileBytes(scratch.Path("whole.wmv"));
    EXPECT_THAT(Repair(scratch.Path("whole.wmv")), HasSubstr("Left as it is"));
    ExpectUntouched(scratch.Path("whole.wmv"), whole);

    struct Row {
        const char* why;
        const char* name;
        double kept;  // of the file's bytes
    };
    const Row rows[] = {
        {"cut in the middle", "whole.wmv", 0.5},
        {"cut by a little", "whole.wmv", 0.999},
        {"small packets", "small.wmv", 0.7},
        {"never finished, since a pipe has no way back", "piped.wmv", 1.0},
        {"never finished and cut", "piped.wmv", 0.4},
        {"sound alone", "sound.wma", 0.6},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const Bytes bytes = asf_reader::FileBytes(scratch.Path(row.name));
        const std::string path = scratch.Path(std::string("cut_") + row.name);
        WriteBytes(path, bytes,
                   static_cast<std::size_t>(static_cast<double>(bytes.size()) * row.kept));
        const std::vector<clips::ReadBack> before = clips::ReadWithLibavformat(path);
        ASSERT_EQ(RepairError(path, ""), 0U);
        const std::vector<clips::ReadBack> after = clips::ReadWithLibavformat(path);
        EXPECT_EQ(test_support::DecodeMessages(path), "");
        // The reader may still find frames in the packet that is cut; no others may be missing.
        constexpr std::size_t frames_of_a_packet = 6;
        ASSERT_LE(after.size(), before.size());
        EXPECT_GE(after.size() + frames_of_a_packet, before.size());
        for (std::size_t i = 0; i < after.size(); ++i) ASSERT_EQ(after[i].bytes, before[i].bytes);
        const double duration = test_support::ProbeNumber(path, "", "duration");
        EXPECT_NEAR(duration, static_cast<double>(after.back().presentation_ms) / 1000, 0.25);
        if (std::string(row.name) == "sound.wma") continue;
        const std::vector<clips::ReadBack> sought = clips::ReadWithLibavformat(path, 2500, 1);
        ASSERT_EQ(sought.size(), 1U);
        // Entries count from the preroll's begin, so that one may name the key frame before.
        EXPECT_TRUE(sought[0].key);
        EXPECT_LE(sought[0].presentation_ms, 2500);
        EXPECT_GE(sought[0].presentation_ms, 1000);
    }
}

TEST(Repair, PacketsOfEveryForm) {
    struct Row {
        const char* why;
        bool good;
        std::size_t payloads;
        Bytes bytes;  // padded with zeros to 64
    };
    // send time, duration
    constexpr std::uint8_t s = 9;
    // clang-format off
    const Row rows[] = {
        // flags, properties, padding, send time, duration; stream, object, offset, replicated
        {"one payload to the padding, its object shorter", false, 0,
         {0x82, 0, 0, 0x08, 0x5D, 29, s, 0, 0, 0, 1, 0, 0x81, 7, 0, 0, 0, 0, 8, 3, 0, 0, 0, 5, 0, 0, 0}},
        {"one payload, its object longer", true, 1, {0x82, 0, 0, 0x08, 0x5D, 29, s, 0, 0, 0, 1, 0, 0x81, 7, 0, 0, 0, 0, 8, 99, 0, 0, 0, 5, 0, 0, 0}},
        {"no error correction, an explicit length of 40", true, 1, {0x20, 0x5D, 40, s, 0, 0, 0, 1, 0, 1, 7, 0, 0, 0, 0, 8, 99, 0, 0, 0, 5, 0, 0, 0}},
        {"a length past the packet", false, 0, {0x20, 0x5D, 65, s, 0, 0, 0, 1, 0, 1, 7, 0, 0, 0, 0, 8, 99, 0, 0, 0, 5, 0, 0, 0}},
        {"three small objects in one payload", true, 3, {0x08, 0x5D, 39, s, 0, 0, 0, 1, 0, 1, 7, 5, 0, 0, 0, 1, 20, 2, 1, 1, 2, 1, 1, 1, 1}},
        {"a small object past its payload", false, 0, {0x08, 0x5D, 39, s, 0, 0, 0, 1, 0, 1, 7, 5, 0, 0, 0, 1, 20, 9, 1, 1, 2, 1, 1, 1, 1}},
        {"two payloads with lengths of a byte, a sequence number", true, 2,
         {0x0B, 0x5D, 3, 16, s, 0, 0, 0, 1, 0, 0x42, 1, 7, 0, 0, 0, 0, 0, 2, 1, 1, 1, 8, 0,
          0, 0, 0, 0, 19, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
        {"an unknown stream", false, 0, {0x82, 0, 0, 0x08, 0x5D, 29, s, 0, 0, 0, 1, 0, 0x83, 7, 0, 0, 0, 0, 8, 99, 0, 0, 0, 5, 0, 0, 0}},
        {"zeros", false, 0, {}},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        Bytes bytes = row.bytes;
        bytes.resize(64);
        PacketFacts facts;
        const std::bitset<128> streams(0b10);
        ASSERT_EQ(ReadPacket(bytes, streams, facts), row.good);
        if (!row.good) continue;
        EXPECT_EQ(facts.payloads.size(), row.payloads);
        EXPECT_EQ(facts.send_ms, s);
        if (row.payloads == 3) {
            EXPECT_EQ(facts.payloads[2].pts_ms, 45U);
        }
    }
}

}  // namespace
}  // namespace engine::asf
