// Any bytes as a profile file: what is read can be written, and is the same when it is read again.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "engine/files/file_text.h"
#include "engine/files/profile_file.h"
#include "platform/error.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace engine::files;
    std::string written;
    try {
        const std::string bytes(data, data + size);
        written = WriteProfile(ReadProfile(DecodeText(bytes)).profile);
    } catch (const platform::Error&) {
        return 0;  // refused
    }
    const ProfileFile again = ReadProfile(DecodeText(EncodeText(written)));
    if (WriteProfile(again.profile) == written) return 0;
    std::fprintf(stderr, "what is written does not come back\n%s\n", written.c_str());
    std::abort();
}
