// A disk that is full, without one.
#pragma once

#include <sys/resource.h>

#include <csignal>
#include <cstdint>

/// No file of this process grows past `bytes` while it lives.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(std::uint64_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    void (*handler_)(int);
    rlimit before_{};
};
