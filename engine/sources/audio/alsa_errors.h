// ALSA's header, and its own reports kept off stderr.
#pragma once

// One of its declarations stands outside of its own linkage block.
extern "C" {
#include <alsa/asoundlib.h>
}

#include <cstdarg>

namespace engine {

/// While it lives, the library prints nothing for this thread: what fails is told by its results.
class SilentAlsaErrors {
  public:
    SilentAlsaErrors() : before_(snd_lib_error_set_local(Ignore)) {}
    ~SilentAlsaErrors() { snd_lib_error_set_local(before_); }
    SilentAlsaErrors(const SilentAlsaErrors&) = delete;
    SilentAlsaErrors& operator=(const SilentAlsaErrors&) = delete;

  private:
    static void Ignore(const char*, int, const char*, int, const char*, va_list) {}
    snd_local_error_handler_t before_;
};

}  // namespace engine
