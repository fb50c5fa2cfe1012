// The frames that an X server's pixels are fetched into, each used again when nobody holds it.
//
// All show the same area, and each remembers what has changed since it was filled last: only that
// is fetched when its turn comes. Where memory can be shared with the server, the server writes
// into the very memory that is handed on, and nothing is copied on this side but narrow boxes.
#pragma once

#include <xcb/shm.h>

#include <cstdint>
#include <deque>
#include <utility>

#include "engine/base/av/av_ptr.h"
#include "engine/sources/screen/damage_boxes.h"
#include "engine/sources/screen/pixel_layout.h"
#include "engine/sources/screen/x11_display.h"

namespace engine {

/// Memory for pixels, which the server may share.
struct ImageMemory {
    AvPtr<AVBufferRef> buffer;  // frames refer to it; alone here when nobody holds the frame
    xcb_shm_seg_t segment = 0;  // 0 = not shared
};

struct X11Image {
    ImageMemory memory;
    DamageBoxes stale;

    std::uint8_t* pixels() const { return memory.buffer->data; }
};

/// One thread. What others hold of a frame may outlive this object.
class X11Frames {
  public:
    explicit X11Frames(X11Display& display);
    ~X11Frames();
    X11Frames(const X11Frames&) = delete;
    X11Frames& operator=(const X11Frames&) = delete;

    /// What the frames are of from now on.
    void Show(xcb_drawable_t drawable, const PixelBox& area, const PixelLayout& layout);

    const PixelBox& area() const { return area_; }
    const PixelLayout& layout() const { return *layout_; }
    int stride() const { return stride_; }

    /// This part of the frame has changed.
    void MarkStale(const PixelBox& box);
    /// All that was marked since the last call; a box around it.
    PixelBox TakeMarked() { return std::exchange(marked_, {}); }

    /// A frame that nobody holds, brought up to date. Stays valid until Show. Null when the
    /// server does not give the pixels now, or when the display was woken. Throws platform::Error
    /// when the server is gone.
    X11Image* Fetch();

  private:
    struct Part;

    bool CanShare();
    ImageMemory NewMemory(bool share);
    void Drop(ImageMemory& memory);
    void DropAll();
    int StrideOf(std::int32_t width) const;
    std::size_t ImageBytes() const;
    PixelBox AsFetched(const PixelBox& box) const;
    X11Image& LeastStale();
    Part Request(const X11Image& image, const PixelBox& box, std::size_t& scratch_used);
    bool Receive(const X11Image& image, const Part& part);
    void CopyRows(const X11Image& image, const PixelBox& box, const std::uint8_t* from) const;

    X11Display& display_;
    bool shares_;
    xcb_drawable_t drawable_ = 0;
    PixelBox area_;  // of the drawable
    const PixelLayout* layout_ = nullptr;
    int stride_ = 0;  // bytes
    ImageMemory scratch_;
    std::deque<X11Image> images_;
    PixelBox marked_;
};

}  // namespace engine
