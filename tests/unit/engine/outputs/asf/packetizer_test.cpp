// Packets: where frames start, how they are cut, what the times say.
#include <gmock/gmock.h>

#include <algorithm>

#include "allocations.h"
#include "clips.h"
#include "engine/outputs/asf/asf_file.h"
#include "engine/outputs/asf/packetizer.h"
#include "support/asf_reader.h"
#include "support/error_of.h"

namespace engine::asf {
namespace {

class Sizes : public testing::TestWithParam<std::uint32_t> {};

TEST_P(Sizes, HoldEveryFrameInOrder) {
    const clips::Clip clip = clips::MadeUp(7000);
    const clips::Folder scratch;
    clips::WriteFile(scratch.Path("a.wmv"), clip, GetParam());
    const asf_reader::File file = asf_reader::ReadFile(scratch.Path("a.wmv"));
    EXPECT_EQ(file.header.packet_bytes, GetParam());

    ASSERT_EQ(file.objects.size(), clip.frames.size());
    EXPECT_EQ(file.unfinished, 0U);
    for (std::size_t i = 0; i < clip.frames.size(); ++i) {
        SCOPED_TRACE(i);
        const clips::Frame& frame = clip.frames[i];
        const asf_reader::MediaObject& object = file.objects[i];
        EXPECT_EQ(object.stream, frame.stream + 1);
        EXPECT_EQ(object.bytes, frame.bytes);
        EXPECT_EQ(object.key, frame.key || frame.stream == 0) << "sound always carries the flag";
        EXPECT_EQ(object.presentation_ms, frame.pts.Milliseconds() + 5000);
        if (frame.stream == 1 && frame.key) {
            EXPECT_EQ(object.payload_in_packet, 0U) << "a key frame starts a packet";
        }
        if (frame.stream == 0 && frame.bytes.size() + 29 <= GetParam()) {
            EXPECT_EQ(object.first_packet, object.last_packet) << "sound is split without need";
        }
        EXPECT_GT(object.presentation_ms, file.packets[object.last_packet].send_ms);
        EXPECT_LE(file.packets[object.first_packet].send_ms, frame.dts.Milliseconds());
        EXPECT_GT(file.packets[object.last_packet].send_ms + 1000, frame.dts.Milliseconds())
            << "a frame waits for a second and more";
    }
    for (std::size_t i = 1; i < file.packets.size(); ++i)
        EXPECT_GE(file.packets[i].send_ms, file.packets[i - 1].send_ms);
}

TEST_P(Sizes, IndexLeadsToTheKeyFrameBefore) {
    const clips::Clip clip = clips::MadeUp(7040);
    const clips::Folder scratch;
    clips::WriteFile(scratch.Path("a.wmv"), clip, GetParam());
    const asf_reader::File file = asf_reader::ReadFile(scratch.Path("a.wmv"));
    ASSERT_EQ(file.indexes.size(), 1U) << "the sound needs none";
    const asf_reader::Index& index = file.indexes[0];
    EXPECT_EQ(index.interval, 10'000'000U);
    ASSERT_EQ(index.entries.size(), 13U) << "5 s of preroll, a last frame at 7 s sharp";
    unsigned most = 0;
    for (std::size_t i = 0; i < index.entries.size(); ++i) {
        SCOPED_TRACE(i);
        const asf_reader::MediaObject* expected = nullptr;
        for (const asf_reader::MediaObject& object : file.objects)
            if (object.stream == 2 && object.key &&
                (expected == nullptr || object.presentation_ms <= i * 1000))
                expected = &object;
        EXPECT_EQ(index.entries[i].packet, expected->first_packet);
        EXPECT_EQ(index.entries[i].packets, expected->last_packet - expected->first_packet + 1);
        most = std::max(most, index.entries[i].packets);
    }
    EXPECT_EQ(index.most_packets, most);
}

INSTANTIATE_TEST_SUITE_P(PacketSizes, Sizes,
                         testing::Values(100, 576, 1400, 3200, 16000, 64000, 65536));

struct Sent {
    std::vector<asf_reader::Packet> packets;  // from a whole file of them
    std::vector<asf_reader::MediaObject> objects;
};

/// The packets of these frames as the reader sees them behind some header.
Sent Send(std::uint32_t packet_bytes, const std::vector<MediaObject>& objects) {
    HeaderFacts facts;
    facts.packet_bytes = packet_bytes;
    facts.preroll_ms = 1000;
    std::vector<std::uint8_t> bytes = BuildHeader(clips::MadeUp(0).header, facts, {});
    Packetizer packetizer(packet_bytes, 1000, [&](const ClosedPacket& packet) {
        bytes.insert(bytes.end(), packet.bytes.begin(), packet.bytes.end());
    });
    for (const MediaObject& object : objects) packetizer.Add(object);
    packetizer.Flush();
    asf_reader::File file = asf_reader::Read(bytes);
    return {std::move(file.packets), std::move(file.objects)};
}

TEST(Packets, FillTheirLastBytesInEveryWay) {
    struct Row {
        const char* why;
        std::size_t bytes;
        std::size_t packets;
        std::size_t padding;  // zeros after the padding's length
    };
    const Row rows[] = {
        {"to the last byte, no length", 1371, 1, 0},
        {"one byte left is the length itself", 1370, 1, 0},
        {"two bytes left", 1369, 1, 1},
        {"the most that a byte's length says", 1371 - 256, 1, 255},
        {"the least that needs a word", 1371 - 257, 1, 255},
        {"a single byte", 1, 1, 1370 - 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const std::vector<std::uint8_t> bytes(row.bytes, 0xAB);
        const Sent sent = Send(1400, {{.stream_number = 1, .bytes = bytes}});
        ASSERT_EQ(sent.packets.size(), row.packets);
        EXPECT_EQ(sent.packets.back().padding, row.padding);
        EXPECT_EQ(sent.objects.at(0).bytes, bytes);
    }
}

TEST(Packets, HoldSixtyThreePayloadsAndNoEmptyFrame) {
    const std::vector<std::uint8_t> byte(1, 7);
    std::vector<MediaObject> objects(130, {.stream_number = 2, .video = true, .bytes = byte});
    objects[5].bytes = {};  // a dropped frame has no place in the file
    const Sent sent = Send(16000, objects);
    ASSERT_EQ(sent.packets.size(), 3U);
    EXPECT_EQ(sent.packets[0].payloads, 63U);
    EXPECT_EQ(sent.packets[1].payloads, 63U);
    EXPECT_EQ(sent.packets[2].payloads, 3U);
}

TEST(Packets, SendTimesFollowDecodeAndShowTimesPresentation) {
    // I P B B as a coder with B-frames sends them, at 25 frames a second.
    const std::vector<std::uint8_t> bytes(900, 7);
    const auto frame = [&](int pts, int dts, bool key) {
        return MediaObject{.stream_number = 2,
                           .video = true,
                           .key = key,
                           .pts = Ticks::FromMilliseconds(pts),
                           .dts = Ticks::FromMilliseconds(dts),
                           .duration = Ticks::FromMilliseconds(40),
                           .bytes = bytes};
    };
    const Sent sent = Send(929, {frame(40, 0, true), frame(160, 40, false), frame(80, 80, false),
                                 frame(120, 120, false)});
    std::vector<std::uint32_t> shown, sent_at, lengths;
    for (const auto& object : sent.objects) shown.push_back(object.presentation_ms);
    for (const auto& packet : sent.packets) sent_at.push_back(packet.send_ms);
    for (const auto& packet : sent.packets) lengths.push_back(packet.duration_ms);
    EXPECT_THAT(shown, testing::ElementsAre(1040, 1160, 1080, 1120));
    EXPECT_THAT(sent_at, testing::ElementsAre(0, 40, 80, 120));
    EXPECT_THAT(lengths, testing::ElementsAre(40, 40, 40, 40));
}

TEST(Packets, FramesOfManyMegabytesKeepTheirOffsets) {
    std::vector<std::uint8_t> bytes(20'000'000);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * i >> 9);
    const Sent sent =
        Send(16000, {{.stream_number = 2, .video = true, .key = true, .bytes = bytes}});
    ASSERT_EQ(sent.objects.size(), 1U);
    EXPECT_EQ(sent.objects[0].bytes, bytes);
}

TEST(Packets, EndBeforeTheirTimesWouldBeginAnew) {
    const std::vector<std::uint8_t> bytes(10);
    const auto at = [&](std::int64_t ms) {
        const Ticks time = Ticks::FromMilliseconds(ms);
        return test_support::ErrorOf(
            [&] { Send(1000, {{.stream_number = 1, .pts = time, .dts = time, .bytes = bytes}}); });
    };
    constexpr std::int64_t kLast = 0xFFFF'FFFF - 1000;  // less the preroll
    EXPECT_EQ(at(kLast).number(), 0);
    EXPECT_THAT(at(kLast + 1).description(), testing::HasSubstr("49 days"));
}

TEST(Packets, NeedNoHeapWhileTheyFlow) {
    const clips::Clip clip = clips::MadeUp(10'000);
    const clips::Folder scratch;
    AsfFile file(scratch.Path("a.wmv"));
    file.Begin(clip.header);
    const std::size_t before = Allocations();
    for (const clips::Frame& frame : clip.frames) file.Write(clips::Coded(frame));
    EXPECT_EQ(Allocations(), before);
}

}  // namespace
}  // namespace engine::asf
