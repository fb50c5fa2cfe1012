// The bytes of coded frames, which several may hold.
#include "engine/base/av/coded_frame_pool.h"

#include <set>
#include <thread>

namespace {

using namespace engine;

CodedBytes Bytes(CodedFramePool& pool, std::uint8_t value) {
    PacketHandle packet = pool.Get();
    EXPECT_EQ(av_new_packet(packet.get(), 1), 0);
    packet->data[0] = value;
    return pool.Share(std::move(packet));
}

std::uint8_t First(const CodedBytes& bytes) { return std::span<const std::uint8_t>(bytes).front(); }

TEST(CodedFramePool, BytesStayAsLongAsSomebodyHoldsThem) {
    CodedFramePool pool;
    CodedFrame kept;
    {
        CodedFrame frame;
        frame.bytes = Bytes(pool, 1);
        kept = frame;
        EXPECT_EQ(std::span<const std::uint8_t>(kept.bytes).data(),
                  std::span<const std::uint8_t>(frame.bytes).data())
            << "a copy of the frame holds the same bytes";
    }
    for (std::uint8_t value = 2; value < 100; ++value) Bytes(pool, value);
    EXPECT_EQ(First(kept.bytes), 1);
    kept.bytes = {};
    EXPECT_FALSE(kept.bytes);
}

TEST(CodedFramePool, PacketsAreUsedAgain) {
    CodedFramePool pool;
    std::set<const AVPacket*> shells;
    for (int i = 0; i < 1000; ++i) {
        PacketHandle packet = pool.Get();
        shells.insert(packet.get());
        ASSERT_EQ(av_new_packet(packet.get(), 1), 0);
        const CodedBytes bytes = pool.Share(std::move(packet));
        const CodedBytes other = bytes;
    }
    EXPECT_EQ(shells.size(), 1U);
}

TEST(CodedFramePool, CopiesUseTheirMemoryAgain) {
    CodedFramePool pool;
    const std::vector<std::uint8_t> given(1000, 7);
    std::set<const std::uint8_t*> places;
    for (std::size_t size = given.size(); size > 0; --size) {
        const CodedBytes bytes = pool.Copy(std::span(given).first(size));
        EXPECT_EQ(bytes.size(), size);
        places.insert(std::span<const std::uint8_t>(bytes).data());
    }
    EXPECT_EQ(places.size(), 1U);
}

TEST(CodedFramePool, TheLastHolderMayBeAnyThread) {
    CodedFramePool pool;
    for (int i = 0; i < 200; ++i) {
        CodedBytes bytes = Bytes(pool, static_cast<std::uint8_t>(i));
        std::thread other([copy = bytes, i] { EXPECT_EQ(First(copy), i); });
        bytes = {};
        other.join();
    }
}

}  // namespace
