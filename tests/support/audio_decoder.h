// Decodes audio packets with a decoder that shares nothing with our encoders.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace test_support {

/// As the stream's header says it.
struct AudioStream {
    std::uint16_t format_tag = 0;
    int sampling_rate = 0;
    int channels = 0;
    int bits_per_sample = 16;
    int average_bytes_per_second = 0;
    int block_align = 0;
    std::vector<std::uint8_t> extra_data;
};

struct DecodedAudio {
    /// By channel, full scale +-1.0; whole numbers of 16 or 32 bits are divided by what that takes.
    std::vector<std::vector<double>> samples;
    std::string messages;  // warnings and worse
};

class AudioDecoder {
  public:
    /// The message says so when no decoder takes the stream.
    explicit AudioDecoder(const AudioStream& stream);
    ~AudioDecoder();

    void Decode(std::span<const std::uint8_t> packet);
    /// That have come out so far, for each channel.
    std::int64_t Samples() const {
        return static_cast<std::int64_t>(decoded_.samples.front().size());
    }
    /// After the last packet.
    DecodedAudio Finish();

  private:
    struct Library;
    void Receive();

    std::unique_ptr<Library> library_;
    DecodedAudio decoded_;
};

}  // namespace test_support
