#include "engine/base/av/frame_damage.h"

#include <new>

namespace engine {
namespace {

// Whoever makes a frame of another copies what is told of it, so that must say of which pixels.
struct Told {
    FrameDamage damage;
    const std::uint8_t* pixels;
    int width;
    int height;
};

}  // namespace

void TellDamage(AVFrame& frame, const FrameDamage& damage) {
    AVBufferRef* const buffer = av_buffer_alloc(sizeof(Told));
    if (buffer == nullptr) throw std::bad_alloc();
    new (buffer->data) Told{damage, frame.data[0], frame.width, frame.height};
    av_buffer_unref(&frame.opaque_ref);
    frame.opaque_ref = buffer;
}

std::optional<FrameDamage> DamageOf(const AVFrame& frame) {
    if (frame.opaque_ref == nullptr || frame.opaque_ref->size != sizeof(Told)) return std::nullopt;
    const auto& told = *reinterpret_cast<const Told*>(frame.opaque_ref->data);
    const bool same =
        told.pixels == frame.data[0] && told.width == frame.width && told.height == frame.height;
    return same ? std::optional(told.damage) : std::nullopt;
}

void DamageSum::Add(const AVFrame& frame) {
    const std::optional<FrameDamage> damage = DamageOf(frame);
    const bool again = damage && number_ == damage->number;
    const bool next = damage && number_ && *number_ + 1 == damage->number;
    if (!again && !next)
        changed_ = {0, 0, frame.width, frame.height};
    else if (next && !damage->changed.IsEmpty())
        changed_ = changed_.IsEmpty() ? damage->changed : Around(changed_, damage->changed);
    number_ = damage ? std::optional(damage->number) : std::nullopt;
}

}  // namespace engine
