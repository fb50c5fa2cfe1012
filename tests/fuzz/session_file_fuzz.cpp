// Any bytes as a session file: what is read can be written, and is the same when it is read again.
// No file is opened that the session does not name.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "engine/files/file_text.h"
#include "engine/files/session_file.h"
#include "platform/error.h"
#include "support/fake_files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace engine::files;
    test_support::FakeFileSystem files;
    const SessionFolder folder(files, "/home/any.wme");
    std::string written;
    try {
        const std::string bytes(data, data + size);
        const SessionFile file = ReadSession(DecodeText(bytes), folder);
        if (file.session.groups.front().profile->audiences.empty()) return 0;  // by name only
        written = WriteSession(file.session, folder, file.text.get());
    } catch (const platform::Error&) {
        return 0;  // refused
    }
    const SessionFile again = ReadSession(DecodeText(EncodeText(written)), folder);
    if (WriteSession(again.session, folder, again.text.get()) == written) return 0;
    std::fprintf(stderr, "what is written does not come back\n%s\n", written.c_str());
    std::abort();
}
