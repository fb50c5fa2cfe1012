// Codes one closed group of pictures.
#pragma once

#include <functional>
#include <memory>

#include "codecs/common/picture_bits.h"
#include "engine/pipeline/av_ptr.h"

namespace engine {

struct CodedPicture {
    PacketHandle data;
    bool key = false;
    codecs::PictureBits bits;
};

/// One thread at a time; coders of several groups may work side by side. Its first picture becomes
/// a key picture, and no other picture refers to one of another group.
class GroupCoder {
  public:
    virtual ~GroupCoder() = default;
    /// Times of the frame are ticks of session time; its own fields are changed, never its picture.
    /// Throws platform::Error.
    virtual CodedPicture Encode(AVFrame& frame, double quantiser) = 0;
};

/// @param bucket_room_bits  what the receiver's buffer takes when the group begins
using GroupCoderMaker = std::function<std::unique_ptr<GroupCoder>(double bucket_room_bits)>;

}  // namespace engine
