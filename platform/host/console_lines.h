// Lines that are typed or piped in, read while the loop runs.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "platform/host/console_loop.h"

namespace platform::host {

/// The descriptor stays the caller's; the loop must outlive the reader.
class LineReader {
  public:
    LineReader(ConsoleLoop& loop, int descriptor) : loop_(loop), descriptor_(descriptor) {}

    /// The next line without its end; nothing at the end of the input or once `stopped` is true.
    /// Throws Error when a line is longer than a mebibyte.
    std::optional<std::string> Next(const std::function<bool()>& stopped);

  private:
    bool HasLine() const { return text_.find('\n', searched_) != std::string::npos; }
    bool IsTooLong() const;
    void Read();

    ConsoleLoop& loop_;
    int descriptor_;
    std::string text_;
    std::size_t searched_ = 0;  // so much of `text_` has no line end
    bool at_end_ = false;
};

}  // namespace platform::host
