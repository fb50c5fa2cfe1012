// Codes one closed GOP.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>

#include "codecs/common/picture_bits.h"
#include "engine/base/av/coded_frame_pool.h"

namespace engine {

struct CodedPicture {
    CodedBytes bytes;
    bool key = false;
    codecs::PictureBits bits;  // by what they code

    double Size() const { return 8.0 * static_cast<double>(bytes.size()); }  // in bits
};

struct PictureRequest {
    codecs::PictureKind kind = codecs::PictureKind::kP;
    double quantiser = 8;
    // Of a B picture: its number from 1 on among so many consecutive ones.
    int b_index = 1;
    int b_count = 1;
    /// A P picture may become an I picture where the scene changes.
    bool may_be_i = true;
    int index = 0;  // in the GOP, as shown
    /// Frames of the GOP as they are shown, of which this one may be one: a coder may filter it
    /// along their motion. LookAhead has been given them.
    std::span<const AVFrame* const> beside{};
    int first_beside = 0;  // index of the first of them
};

/// One thread at a time; coders of several GOPs may work side by side. Its first picture becomes
/// an I picture, and no other picture refers to one of another GOP.
class GopCoder {
  public:
    virtual ~GopCoder() = default;
    /// In coding order. Times of the frame are ticks of session time; its own fields are changed,
    /// never its picture. Throws platform::Error.
    virtual CodedPicture Encode(AVFrame& frame, const PictureRequest& request) = 0;

    /// Whether the two below are there; a coder that has not got them keeps to the receiver's
    /// buffer by itself.
    virtual bool Recodes() const { return false; }
    /// Codes in place of the picture coded last.
    virtual CodedPicture Recode(AVFrame& frame, const PictureRequest& request) {
        return Encode(frame, request);
    }
    /// As if the picture coded last had not been.
    virtual void Forget() {}

    /// The GOP's pictures as they are shown, each before any later one is coded. Returns how much
    /// of the picture is new beside the one before it, from 0 to 1; nothing where that is unknown.
    virtual std::optional<double> LookAhead(const AVFrame& /*frame*/) { return {}; }
    /// How many of the pictures after the I or P picture coded last are better coded as B pictures:
    /// the first n of them, n below their number.
    /// @param next   some of them, as many as are at hand
    /// @param first  index of the first of them in the GOP, as shown
    virtual int ChooseBPictures(std::span<const AVFrame* const> /*next*/, int /*first*/) {
        return 0;
    }
};

/// @param vbv_room_bits  what the VBV takes when the GOP begins
using GopCoderMaker = std::function<std::unique_ptr<GopCoder>(double vbv_room_bits)>;

}  // namespace engine
