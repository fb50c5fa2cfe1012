// Encodes pictures as Windows Media Video 9 (SMPTE ST 421, Simple and Main profile).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "codecs/common/picture_bits.h"

namespace codecs::wmv9 {

enum class Profile : std::uint8_t { Simple, Main };

using codecs::PictureKind;

struct EncoderSettings {
    int width = 16;  // even, 2 to 8192
    int height = 16;
    Profile profile = Profile::Main;
    int effort = 60;  // 0 fastest to 100 best
    int between = 0;  // the most pictures between two others, 0 to 3; none in Simple profile
    int threads = 1;  // that code the rows of a picture side by side; changes no output
    /// Coarser where the eye sees less, and finer elsewhere; predicted pictures then have whole
    /// quantisers. Not in Simple profile.
    bool adaptive = false;
    double pictures_per_second = 30;  // hints of the sequence header
    double rate_bps = 0;
};

/// 4:2:0, eight bits: luma, blue and red difference. Strides in samples, may be negative.
struct PictureView {
    std::array<const std::uint8_t*, 3> planes{};
    std::array<std::ptrdiff_t, 3> strides{};
};

struct PictureRequest {
    PictureKind kind = PictureKind::Predicted;
    double quantiser = 8;  // 1 to 31, in steps of a half up to 8.5
    // Of a picture between two others: its place from 1 on in a run of so many.
    int place = 1;
    int run = 1;
    /// A predicted one may become a key picture where the scene changes; not when pictures are to
    /// come that stand before it.
    bool may_be_key = true;
};

struct CodedPicture {
    std::span<const std::uint8_t> data;   // valid until the next call
    PictureKind kind = PictureKind::Key;  // a predicted one may have become a key picture
    double quantiser = 0;                 // that was used
    PictureBits bits;
};

/// Takes pictures in coding order: one between two others after the later one of them. The first
/// picture becomes a key picture whatever is asked, and one between others without two such before
/// it a predicted one. Values out of range are brought into it. One thread at a time; allocates on
/// construction, and where a picture takes more bytes than any before it.
class Encoder {
  public:
    explicit Encoder(const EncoderSettings& settings);
    ~Encoder();
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    /// The four bytes that stand after the stream's picture format (STRUCT_C).
    std::array<std::uint8_t, 4> SequenceHeader() const;

    CodedPicture Encode(const PictureView& picture, const PictureRequest& request);
    /// Codes in place of the picture coded last.
    CodedPicture Recode(const PictureView& picture, const PictureRequest& request);
    /// As if the picture coded last had not been.
    void Forget();

    /// What a decoder shows of the picture coded last.
    PictureView Reconstruction() const;

    /// How many of the pictures that come next, the last of which would be predicted, are better
    /// coded between two others: the first n of them, n below their number. `before` is the
    /// source of the key or predicted picture before them.
    int ChooseBetween(const PictureView& before, std::span<const PictureView> next);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace codecs::wmv9
