#include "platform/host/console_lines.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/error.h"

namespace platform::host {

namespace {

constexpr std::size_t kLongestLine = std::size_t{1} << 20U;

}  // namespace

std::optional<std::string> LineReader::Next(const std::function<bool()>& stopped) {
    loop_.Watch(descriptor_, [this] { Read(); });
    loop_.RunUntil([&] { return HasLine() || at_end_ || IsTooLong() || stopped(); });
    loop_.Watch(-1, {});
    if (stopped() || text_.empty()) return std::nullopt;
    const std::size_t end = text_.find('\n', searched_);
    if (std::min(end, text_.size()) > kLongestLine)
        throw Error(kInvalidData,
                    "The input has a line of more than a mebibyte: it is no "
                    "command. Give one command a line.");
    searched_ = 0;
    std::string line = text_.substr(0, end);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    text_.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

bool LineReader::IsTooLong() const { return searched_ > kLongestLine; }

void LineReader::Read() {
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(descriptor_, buffer.data(), buffer.size());
    searched_ = text_.size();  // it is read on where no line was found
    if (count > 0) {
        text_.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
        at_end_ = true;
    }
}

}  // namespace platform::host
