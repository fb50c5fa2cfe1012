#include "platform/posix/file_descriptor.h"

#include <fcntl.h>

#include <cerrno>

namespace platform {

void OccupyStandardDescriptors() {
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        if (::fcntl(number, F_GETFD) >= 0 || errno != EBADF) continue;
        // Opened for the wrong direction. It gets this number, being the lowest that is free.
        static_cast<void>(::open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
}

}  // namespace platform
