// What the tests of the file output write: made-up frames of any shape, and real clips.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/base/output_sink.h"
#include "support/clips.h"

namespace clips {

struct Frame {
    int stream = 0;
    engine::Ticks pts, dts, duration;
    bool key = false;
    std::vector<std::uint8_t> bytes;
};

struct Clip {
    engine::OutputHeader header;
    std::vector<Frame> frames;  // in order of dts
};

/// Sound (64 kbit/s) and frames (300 kbit/s, 25 a second, a key frame every 2 s) of patterned
/// bytes that no decoder would take.
Clip MadeUp(int milliseconds);

/// The frames and headers of a file, as libavformat reads them; times from 0.
Clip Demux(const std::string& path);

/// Begin and every frame, without Finish.
void WriteAll(engine::OutputSink& sink, const Clip& clip);
/// A finished file of packets of this size.
void WriteFile(const std::string& path, Clip clip, std::uint32_t packet_bytes);

engine::CodedFrame Coded(const Frame& frame);

struct ReadBack {
    int stream = 0;
    std::int64_t presentation_ms = 0;
    bool key = false;
    std::vector<std::uint8_t> bytes;
};
/// What libavformat reads of the file from `seek_ms` (< 0 = from its start; at most `limit`
/// frames).
std::vector<ReadBack> ReadWithLibavformat(const std::string& path, std::int64_t seek_ms = -1,
                                          std::size_t limit = 1'000'000);

}  // namespace clips
