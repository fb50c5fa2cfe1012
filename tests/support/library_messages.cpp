#include "support/library_messages.h"

#include <cstdarg>
#include <cstdio>

extern "C" {
#include <libavutil/log.h>
}

namespace test_support {
namespace {

std::string& Ignored() {
    thread_local std::string ignored;
    return ignored;
}

void Collect(void* /*source*/, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_WARNING) return;
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    const std::string message = text;
    if (Ignored().empty() || message.find(Ignored()) == std::string::npos)
        LibraryMessages() += message;
}

}  // namespace

std::string& LibraryMessages() {
    thread_local std::string messages;
    return messages;
}

void CollectLibraryMessages(const std::string& ignored) {
    Ignored() = ignored;
    LibraryMessages().clear();
    av_log_set_callback(Collect);
}

}  // namespace test_support
