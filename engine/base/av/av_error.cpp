#include "engine/base/av/av_error.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>

#include "engine/base/av/av_ptr.h"
#include "platform/posix/system_error.h"

namespace engine {
namespace {

// FFmpeg's own codes are made of four letters and lie far beyond.
constexpr int kMostErrno = 4096;

struct ErrorRow {
    int code;
    platform::ErrorNumber number;
    const char* text;
};

// clang-format off
constexpr ErrorRow kErrors[] = {
    // FFmpeg's code               number                      what it says
    {AVERROR_INVALIDDATA,          platform::kInvalidData,     "the data cannot be read; the file is damaged or of an unknown kind"},
    {AVERROR_EOF,                  platform::kInvalidData,     "the file ends too early"},
    {AVERROR_DECODER_NOT_FOUND,    platform::kInvalidData,     "there is no decoder for it"},
    {AVERROR_ENCODER_NOT_FOUND,    platform::kNotImplemented,  "there is no such encoder in the installed FFmpeg"},
};
// clang-format on

}  // namespace

platform::Error AvError(int code, const std::string& subject) {
    for (const ErrorRow& row : kErrors) {
        if (row.code == code) return {row.number, fmt::format("{}: {}", subject, row.text)};
    }
    if (code > -kMostErrno) {
        const platform::SystemCause cause = platform::CauseOf(AVUNERROR(code));
        return {cause.number, fmt::format("{}: {}", subject, cause.Text())};
    }
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return {platform::kUnspecified, fmt::format("{}: {}", subject, text.data())};
}

int CheckAv(int code, const std::string& subject) {
    if (code < 0) throw AvError(code, subject);
    return code;
}

}  // namespace engine
