// What ends a wait for descriptors from another thread.
#pragma once

#include <sys/eventfd.h>

#include "platform/posix/file_descriptor.h"

namespace platform {

/// Readable once written, until it is cleared. Any thread.
class EventFd {
  public:
    int Descriptor() const { return descriptor_.Number(); }
    bool IsOpen() const { return descriptor_.IsOpen(); }  // not when there is none to be had
    /// Fails only when the counter is full, and then it is readable as it should be.
    void Write() const { static_cast<void>(eventfd_write(Descriptor(), 1)); }
    void Clear() const {
        eventfd_t count = 0;
        static_cast<void>(eventfd_read(Descriptor(), &count));
    }

  private:
    FileDescriptor descriptor_{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

}  // namespace platform
