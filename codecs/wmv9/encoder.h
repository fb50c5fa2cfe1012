// Encodes pictures as Windows Media Video 9 (SMPTE ST 421, Simple and Main profile).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "codecs/common/picture_bits.h"

namespace codecs::wmv9 {

enum class Profile : std::uint8_t { Simple, Main };

using codecs::PictureKind;

struct EncoderSettings {
    int width = 16;  // even, 2 to 8192
    int height = 16;
    Profile profile = Profile::Main;
    int preset = 60;     // 0 fastest to 100 best
    int b_pictures = 0;  // the most consecutive ones, 0 to 3; none in Simple profile
    int threads = 1;     // that code the rows of a picture side by side; changes no output
    /// P pictures are coarser where the eye sees less, and finer where later pictures refer to
    /// them. Not in Simple profile.
    bool adaptive = false;
    double pictures_per_second = 30;  // hints of the sequence header
    double rate_bps = 0;
};

/// 4:2:0, eight bits: luma, blue and red difference. Strides in samples, may be negative.
struct PictureView {
    std::array<const std::uint8_t*, 3> planes{};
    std::array<std::ptrdiff_t, 3> strides{};
};

/// The format's own coarsest quantiser is 31. Coarser ones are coded with that one, in decisions
/// whose bits are worth what they are at the quantiser that there is not.
constexpr int kCoarsestAsked = 124;

struct PictureRequest {
    PictureKind kind = PictureKind::kP;
    double quantiser = 8;  // 1 to kCoarsestAsked, in steps of a half up to 8.5
    int b_number = 1;      // of a B picture: from 1 on ...
    int b_pictures = 1;    // ... among so many consecutive ones
    /// A P picture may become an I picture where the scene changes; not when B pictures are to
    /// come that stand before it.
    bool may_be_i = true;
    int number = -1;  // among those that LookAhead was given; -1 = not among them
    /// Pictures as they are shown, which LookAhead has been given and of which this one may be one:
    /// I and P pictures are filtered along the motion of the one before and of the three after, the
    /// more the coarser they are.
    std::span<const PictureView> beside{};
    int first_beside = 0;  // number of the first of them
};

struct CodedPicture {
    std::span<const std::uint8_t> data;  // valid until the next call
    PictureKind kind = PictureKind::kI;  // a P picture may have become an I picture
    double quantiser = 0;                // that was asked for, as near to it as there is one
    PictureBits bits;
};

/// By how many of the next pictures B pictures and tools are chosen.
constexpr int kTriedPictures = 9;

/// How many pictures Encoder::LookAhead had better be given beyond the one that is coded.
int LookaheadPictures(const EncoderSettings& settings);

/// Takes pictures in coding order: a B picture after the later one of the two that it refers to.
/// The first picture becomes an I picture whatever is asked, and a B picture without two others
/// before it a P picture. Values out of range are brought into it. One thread at a time; allocates
/// on construction, at the first fade, and where a picture takes more bytes than any before it.
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

    /// What a decoder shows of the picture coded last; until the next call.
    PictureView Reconstruction() const;

    /// The next picture in the order in which they are shown; from before the first one is coded
    /// on, or never. I and P pictures become finer the more of those that it has been given since
    /// are predicted with them, and are so again. Returns how much of the picture is new, from 0 to
    /// 1; nothing where the preset has no look-ahead.
    std::optional<double> LookAhead(const PictureView& picture);
    /// How many of the pictures after the I or P picture coded last are better coded as B pictures:
    /// the first n of them, n below their number. Afterwards the picture coded last cannot be coded
    /// again.
    /// @param next   some of them, kTriedPictures if they are there; LookAhead has been given them
    /// @param first  number of the first of them
    int ChooseBPictures(std::span<const PictureView> next, int first);

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace codecs::wmv9
