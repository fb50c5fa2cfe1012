// What ends a wait for descriptors from another thread.
#pragma once

#include <sys/eventfd.h>
#include <unistd.h>

namespace engine {

/// Readable once written, until it is cleared. Any thread.
class EventFd {
  public:
    EventFd() = default;
    ~EventFd() { close(descriptor_); }
    EventFd(const EventFd&) = delete;
    EventFd& operator=(const EventFd&) = delete;

    int Descriptor() const { return descriptor_; }  // negative when there is none to be had
    void Write() const { eventfd_write(descriptor_, 1); }
    void Clear() const {
        eventfd_t count = 0;
        eventfd_read(descriptor_, &count);
    }

  private:
    int descriptor_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
};

}  // namespace engine
