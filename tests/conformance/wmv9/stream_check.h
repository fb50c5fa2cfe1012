// Compares streams with an independent decoder: every sample must be what the encoder says.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>

#include "codecs/wmv9/encoder.h"
#include "conformance/wmv9/scenes.h"

struct AVFrame;

namespace wmv9_conformance {

/// What holds for all pictures of a stream.
struct StreamFormat {
    int width = 16;
    int height = 16;
    std::array<std::uint8_t, 4> sequence_header{};
};

/// Takes a stream's pictures one by one. The decoder must accept all without a word, and show each
/// once, in its place.
class StreamCheck {
  public:
    explicit StreamCheck(const StreamFormat& format);
    ~StreamCheck();

    /// In coding order.
    /// @param shown  what the encoder says a decoder shows
    /// @param place  among the pictures that are shown
    /// @param name   by which a fault tells the picture
    void Take(std::span<const std::uint8_t> data, const codecs::wmv9::PictureView& shown, int place,
              std::string name);
    /// After the last picture. The first fault; empty = none.
    std::string Finish();

  private:
    struct Expected {
        PlanarPicture picture;
        int place;
        std::string name;
    };
    struct Decoder;

    void Send(std::span<const std::uint8_t> data, std::int64_t number);
    void Receive();
    void Compare(const AVFrame& frame);
    void Fault(const std::string& fault);

    std::unique_ptr<Decoder> decoder_;
    std::map<std::int64_t, Expected> waiting_;  // by number in coding order
    std::int64_t taken_ = 0;
    int last_place_ = -1;
    std::string fault_;
};

}  // namespace wmv9_conformance
