#include "engine/sources/screen/x11_frames.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace engine {
namespace {

constexpr std::uint32_t kAllPlanes = ~0U;
// Converters may read a little past the last row.
constexpr std::size_t kPadding = 4096;
// Fetching a pixel and copying it takes about so many times as long as only fetching it.
constexpr std::int32_t kCopyCost = 6;

void Unmap(void* size, std::uint8_t* memory) {
    const std::unique_ptr<std::size_t> owned(static_cast<std::size_t*>(size));
    munmap(memory, *owned);
}

}  // namespace

// A box on its way from the server.
struct X11Frames::Part {
    PixelBox box;
    unsigned sequence;            // of the request
    bool shared;                  // the server writes it into memory of ours
    const std::uint8_t* scratch;  // where to, when it must be copied from there
};

X11Frames::X11Frames(X11Display& display) : display_(display), shares_(CanShare()) {}

X11Frames::~X11Frames() { DropAll(); }

// Memory is shared by handing its descriptor over, which goes through local sockets only, and which
// servers and proxies may refuse.
bool X11Frames::CanShare() {
    if (!display_.IsLocal() || !display_.Has(xcb_shm_id)) return false;
    const auto version =
        display_.Await<xcb_shm_query_version_reply_t>(xcb_shm_query_version(display_.get()));
    if (!version || (version->major_version == 1 && version->minor_version < 2)) return false;
    const int descriptor = memfd_create("screen", MFD_CLOEXEC);
    if (descriptor < 0 || ftruncate(descriptor, static_cast<off_t>(kPadding)) != 0) return false;
    const xcb_shm_seg_t segment = xcb_generate_id(display_.get());
    const auto refused = Own(xcb_request_check(
        display_.get(), xcb_shm_attach_fd_checked(display_.get(), segment, descriptor, 0)));
    if (refused) return false;
    xcb_shm_detach(display_.get(), segment);
    return true;
}

ImageMemory X11Frames::NewMemory(bool share) {
    const std::size_t size = ImageBytes() + kPadding;
    const int descriptor = memfd_create("screen", MFD_CLOEXEC);
    if (descriptor < 0) throw std::bad_alloc();
    void* memory = MAP_FAILED;
    if (ftruncate(descriptor, static_cast<off_t>(size)) == 0)
        memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    ImageMemory made;
    auto owned = std::make_unique<std::size_t>(size);
    if (memory != MAP_FAILED)
        made.buffer.reset(
            av_buffer_create(static_cast<std::uint8_t*>(memory), size, Unmap, owned.get(), 0));
    if (made.buffer) static_cast<void>(owned.release());
    if (!made.buffer || !share) close(descriptor);
    if (!made.buffer) {
        if (memory != MAP_FAILED) munmap(memory, size);
        throw std::bad_alloc();
    }
    if (!share) return made;
    made.segment = xcb_generate_id(display_.get());
    xcb_shm_attach_fd(display_.get(), made.segment, descriptor, 0);  // closes the descriptor
    return made;
}

void X11Frames::Drop(ImageMemory& memory) {
    if (memory.segment != 0) xcb_shm_detach(display_.get(), memory.segment);
    memory = {};
}

void X11Frames::DropAll() {
    for (X11Image& each : images_) Drop(each.memory);
    images_.clear();
    Drop(scratch_);
}

void X11Frames::Show(xcb_drawable_t drawable, const PixelBox& area, const PixelLayout& layout) {
    drawable_ = drawable;
    const bool same_memory = area.SameSize(area_) && &layout == layout_;
    area_ = area;
    layout_ = &layout;
    stride_ = StrideOf(area.width);
    if (!same_memory) {
        DropAll();
        if (shares_) scratch_ = NewMemory(true);
    }
    MarkStale({0, 0, area.width, area.height});
}

// The server pads rows to whole 32 bits.
int X11Frames::StrideOf(std::int32_t width) const { return (width * layout_->bytes + 3) & ~3; }

std::size_t X11Frames::ImageBytes() const {
    return static_cast<std::size_t>(stride_) * static_cast<std::size_t>(area_.height);
}

void X11Frames::MarkStale(const PixelBox& box) {
    const PixelBox inside = Intersection(box, {0, 0, area_.width, area_.height});
    if (inside.IsEmpty()) return;
    marked_ = marked_.IsEmpty() ? inside : Around(marked_, inside);
    for (X11Image& each : images_) each.stale.Add(AsFetched(inside));
}

// The server can only write rows as they lie in the frame when they are whole. That costs less
// than it takes to copy the box from elsewhere, unless it is narrow.
PixelBox X11Frames::AsFetched(const PixelBox& box) const {
    if (!shares_ || box.IsEmpty() || kCopyCost * box.width < area_.width) return box;
    return {0, box.y, area_.width, box.height};
}

X11Image& X11Frames::LeastStale() {
    X11Image* best = nullptr;
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    for (X11Image& each : images_) {
        const std::int64_t stale = each.stale.Pixels();
        if (av_buffer_get_ref_count(each.memory.buffer.get()) > 1 || stale >= least) continue;
        best = &each;
        least = stale;
    }
    if (best != nullptr) return *best;
    X11Image& made = images_.emplace_back(X11Image{NewMemory(shares_), {}});
    made.stale.Add({0, 0, area_.width, area_.height});
    return made;
}

X11Image* X11Frames::Fetch() {
    X11Image& image = LeastStale();
    std::vector<Part> parts;
    std::size_t scratch_used = 0;
    for (const PixelBox& box : image.stale.boxes())
        parts.push_back(Request(image, box, scratch_used));
    bool whole = true;
    for (const Part& part : parts) whole = Receive(image, part) && whole;
    if (!whole) return nullptr;
    image.stale.Clear();
    return &image;
}

X11Frames::Part X11Frames::Request(const X11Image& image, const PixelBox& box,
                                   std::size_t& scratch_used) {
    const auto ask_shared = [&](const PixelBox& part, const ImageMemory& memory,
                                std::size_t offset) {
        return xcb_shm_get_image(
                   display_.get(), drawable_, static_cast<std::int16_t>(area_.x + part.x),
                   static_cast<std::int16_t>(area_.y + part.y),
                   static_cast<std::uint16_t>(part.width), static_cast<std::uint16_t>(part.height),
                   kAllPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP, memory.segment,
                   static_cast<std::uint32_t>(offset))
            .sequence;
    };
    if (!shares_)
        return {box,
                xcb_get_image(display_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable_,
                              static_cast<std::int16_t>(area_.x + box.x),
                              static_cast<std::int16_t>(area_.y + box.y),
                              static_cast<std::uint16_t>(box.width),
                              static_cast<std::uint16_t>(box.height), kAllPlanes)
                    .sequence,
                false, nullptr};
    const std::size_t bytes =
        static_cast<std::size_t>(StrideOf(box.width)) * static_cast<std::size_t>(box.height);
    const PixelBox rows{0, box.y, area_.width, box.height};
    if (AsFetched(box) == rows || scratch_used + bytes > ImageBytes())
        return {rows,
                ask_shared(rows, image.memory,
                           static_cast<std::size_t>(stride_) * static_cast<std::size_t>(box.y)),
                true, nullptr};
    const std::size_t offset = std::exchange(scratch_used, scratch_used + bytes);
    return {box, ask_shared(box, scratch_, offset), true, scratch_.buffer->data + offset};
}

bool X11Frames::Receive(const X11Image& image, const Part& part) {
    if (part.shared) {
        const auto reply =
            display_.Await<xcb_shm_get_image_reply_t>(xcb_shm_get_image_cookie_t{part.sequence});
        if (reply && part.scratch != nullptr) CopyRows(image, part.box, part.scratch);
        return reply != nullptr;
    }
    const auto reply = display_.Await<xcb_get_image_reply_t>(xcb_get_image_cookie_t{part.sequence});
    const auto bytes = static_cast<std::size_t>(StrideOf(part.box.width)) *
                       static_cast<std::size_t>(part.box.height);
    if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < bytes)
        return false;
    CopyRows(image, part.box, xcb_get_image_data(reply.get()));
    return true;
}

void X11Frames::CopyRows(const X11Image& image, const PixelBox& box,
                         const std::uint8_t* from) const {
    const auto bytes =
        static_cast<std::size_t>(box.width) * static_cast<std::size_t>(layout_->bytes);
    std::uint8_t* to =
        image.pixels() + std::ptrdiff_t{box.y} * stride_ + std::ptrdiff_t{box.x} * layout_->bytes;
    for (std::int32_t row = 0; row < box.height; ++row, to += stride_, from += StrideOf(box.width))
        std::memcpy(to, from, bytes);
}

}  // namespace engine
