// Preloaded into xdg-desktop-portal-wlr, so that it works where there are no graphics: it waits for
// the compositor to offer memory of the graphics card, which a headless one never does, before it
// uses the plain memory that was offered. This makes up the missing offer.
#include <dlfcn.h>

#include <cstdint>
#include <cstring>

struct wl_proxy;
extern "C" const char* wl_proxy_get_class(wl_proxy* proxy);

namespace {

// The events of zwlr_screencopy_frame_v1 in the protocol's order.
struct FrameListener {
    using Buffer = void (*)(void* data, wl_proxy* frame, std::uint32_t format, std::uint32_t width,
                            std::uint32_t height, std::uint32_t stride);
    using GraphicsBuffer = void (*)(void* data, wl_proxy* frame, std::uint32_t four_cc,
                                    std::uint32_t width, std::uint32_t height);
    using Other = void (*)();

    Buffer buffer;
    Other flags, ready, failed, damage;
    GraphicsBuffer linux_dmabuf;
    Other buffer_done;
};

const FrameListener* original = nullptr;  // one for all frames

// The two formats that plain memory always has keep their old numbers there.
std::uint32_t FourCcOf(std::uint32_t shm_format) {
    constexpr std::uint32_t kArgb = 0x34325241, kXrgb = 0x34325258;
    return shm_format == 0 ? kArgb : shm_format == 1 ? kXrgb : shm_format;
}

void OfferBoth(void* data, wl_proxy* frame, std::uint32_t format, std::uint32_t width,
               std::uint32_t height, std::uint32_t stride) {
    original->buffer(data, frame, format, width, height, stride);
    original->linux_dmabuf(data, frame, FourCcOf(format), width, height);
}

}  // namespace

extern "C" int wl_proxy_add_listener(wl_proxy* proxy, void (**listener)(), void* data) {
    using Function = int (*)(wl_proxy*, void (**)(), void*);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "wl_proxy_add_listener"));
    if (std::strcmp(wl_proxy_get_class(proxy), "zwlr_screencopy_frame_v1") != 0)
        return next(proxy, listener, data);
    original = reinterpret_cast<const FrameListener*>(listener);
    static FrameListener completed;
    completed = *original;
    completed.buffer = OfferBoth;
    return next(proxy, reinterpret_cast<void (**)()>(&completed), data);
}
