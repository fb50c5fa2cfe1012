// A connection to the X server that never blocks against the will of its user.
#pragma once

#include <xcb/xcb.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/base/pixel_box.h"
#include "platform/posix/event_fd.h"

namespace engine {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using ReplyPtr = std::unique_ptr<Reply, FreeReply>;

template <typename Reply>
ReplyPtr<Reply> Own(Reply* reply) {
    return ReplyPtr<Reply>(reply);
}

struct Monitor {
    std::string name;
    PixelBox box;  // on the screen
};

/// One thread, but for Wake.
class X11Display {
  public:
    /// Connects to the server that the variable DISPLAY names.
    /// Throws platform::Error when none answers.
    X11Display();
    X11Display(const X11Display&) = delete;
    X11Display& operator=(const X11Display&) = delete;

    xcb_connection_t* get() const { return connection_.get(); }
    const xcb_screen_t& screen() const { return *screen_; }
    xcb_window_t root() const { return screen_->root; }

    bool Has(xcb_extension_t& extension) const;
    /// What the extension's events are counted from.
    std::uint8_t FirstEvent(xcb_extension_t& extension) const;
    /// Whether the server is on this machine, so that memory can be shared with it.
    bool IsLocal() const;

    /// Nothing when the window is gone. Inside the border, on its parent.
    std::optional<PixelBox> Geometry(xcb_window_t window) const;
    /// "" = none.
    std::string Title(xcb_window_t window) const;
    /// The numbers or atoms of a property; none where the window has no such.
    std::vector<std::uint32_t> Numbers(xcb_window_t window, std::string_view name) const;
    /// No atom when no program has used the name yet.
    xcb_atom_t Atom(std::string_view name) const;
    /// None when the server cannot tell.
    std::vector<Monitor> Monitors() const;

    /// Ends a Wait or Await, and every later one. Any thread.
    void Wake();
    bool IsWoken() const { return woken_; }
    /// Waits until the time is over or, when `events` is set, something came from the server.
    void Wait(std::chrono::nanoseconds time, bool events) const;
    /// The reply to a request; null when the server refused it, or when woken.
    /// Throws platform::Error when the server is gone.
    template <typename Reply, typename Cookie>
    ReplyPtr<Reply> Await(Cookie cookie) const {
        return Own(static_cast<Reply*>(AwaitReply(cookie.sequence)));
    }
    /// What came from the server; null when there is nothing more.
    /// Throws platform::Error when the server is gone.
    ReplyPtr<xcb_generic_event_t> NextEvent() const;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    void* AwaitReply(unsigned sequence) const;
    void CheckAlive() const;
    std::string TextProperty(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) const;

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    const xcb_screen_t* screen_ = nullptr;
    const platform::EventFd wake_;  // readable once woken
    std::atomic<bool> woken_ = false;
};

}  // namespace engine
