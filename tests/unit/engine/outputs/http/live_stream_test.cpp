// The stream as it leaves for the network.
#include "engine/outputs/live/live_stream.h"

#include "unit/engine/outputs/live_frames.h"

namespace {

using namespace engine;

using live_frames::Header;

class Stream : public testing::Test {
  protected:
    void Write(LiveStream& stream, int index, std::int64_t ms, bool key, int bytes) {
        stream.Write(frames_.Make(index, ms, key, bytes));
    }

    live_frames::Frames frames_;
    std::vector<LivePacketPtr> packets_;
    LiveStream::Receiver Receive() {
        return [this](LivePacketPtr packet) { packets_.push_back(std::move(packet)); };
    }
};

TEST_F(Stream, CanBeJoinedWhereAVideoKeyFrameBegins) {
    LiveStream stream(Header(true), Receive());
    Write(stream, 0, 0, false, 200);
    Write(stream, 1, 0, true, 9000);
    Write(stream, 1, 40, false, 100);
    Write(stream, 0, 80, false, 200);
    Write(stream, 1, 80, true, 100);
    stream.Flush();
    std::vector<std::uint64_t> joins;
    int frames = 0;
    for (const LivePacketPtr& packet : packets_) {
        if (packet->join_point) joins.push_back(packet->number);
        frames += packet->frames;
        EXPECT_EQ(packet->bytes.size(), stream.PacketBytes());
    }
    EXPECT_EQ(joins, (std::vector<std::uint64_t>{1, packets_.back()->number}));
    EXPECT_EQ(frames, 5);
}

TEST_F(Stream, LeavesNoFrameInAHalfFullPacketForLong) {
    LiveStream stream(Header(true), Receive());
    int sent = 0;
    for (std::int64_t ms = 0; ms <= 2000; ms += 50) {
        Write(stream, 1, ms, ms == 0, 20);
        for (; !packets_.empty(); packets_.erase(packets_.begin()))
            sent += packets_.front()->frames;
        EXPECT_LE(ms / 50 + 1 - sent, 4) << "frames wait at " << ms;
    }
}

TEST_F(Stream, OfAudioAloneCanBeJoinedAtEachFrame) {
    LiveStream stream(Header(false), Receive());
    for (int i = 0; i < 5; ++i) {
        Write(stream, 0, i * 100, false, 200);
        stream.Flush();
    }
    ASSERT_EQ(packets_.size(), 5U);
    for (const LivePacketPtr& packet : packets_) EXPECT_TRUE(packet->join_point);
}

TEST_F(Stream, LosesItsPaddingAndNothingElse) {
    LiveStream stream(Header(true), Receive());
    for (const int bytes : {1, 3000, 4500, 4540, 4541, 4542, 4543, 4544, 4545, 4546})
        Write(stream, 1, bytes, true, bytes);
    stream.Flush();
    for (const LivePacketPtr& packet : packets_) {
        const asf::UnpaddedPacket& unpadded = packet->unpadded;
        ASSERT_LE(unpadded.size, packet->bytes.size());
        for (std::size_t i = unpadded.size; i < packet->bytes.size(); ++i)
            ASSERT_EQ(packet->bytes[i], 0) << "only padding is left out";
        const std::size_t padding = packet->bytes.size() - unpadded.size;
        if (padding > 0) {
            EXPECT_EQ(packet->bytes[unpadded.size - 1], 0xAB);
            EXPECT_GE(padding, 16U) << "which readers might take for a payload";
        }
        for (std::size_t i = 0; i < unpadded.head.size(); ++i)
            EXPECT_TRUE(unpadded.head[i] == packet->bytes[i] || unpadded.head[i] == 0);
    }
}

TEST_F(Stream, HasAHeaderWithoutAnEnd) {
    const LiveStream stream(Header(true), Receive());
    const std::vector<std::uint8_t>& header = stream.Header();
    constexpr std::size_t kDataBytes = 50;
    ASSERT_GT(header.size(), kDataBytes);
    const std::uint8_t* count = header.data() + header.size() - 10;
    EXPECT_EQ((std::vector<std::uint8_t>(count, count + 8)),
              (std::vector<std::uint8_t>{0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}));
}

}  // namespace
