// What every output (file, broadcast, push) is: it gets the streams' headers, then the same frames.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "engine/base/coded_frame.h"
#include "engine/base/stream_header.h"
#include "engine/base/ticks.h"

namespace engine {

/// Called with a sentence that the person should know while all goes well; any thread.
using OutputNotices = std::function<void(const std::string& text)>;

struct OutputResult {
    std::uint64_t bytes = 0;
    Ticks duration;  // end of the last coded frame
};

/// Calls come from one thread at a time, in the order Begin, Write and Flush ..., then Finish or
/// Abandon. A sink that is destroyed before either leaves what it has written playable.
class OutputSink {
  public:
    virtual ~OutputSink() = default;
    /// Throws platform::Error (access denied, path not found, disk full, invalid argument).
    virtual void Begin(const OutputHeader& header) = 0;
    /// Dts of all streams together do not decrease. The sink may keep a copy of the frame, which
    /// holds its bytes. Throws platform::Error.
    virtual void Write(const CodedFrame& frame) = 0;
    /// What was written is to reach the disk or the listeners now: nothing may come for long.
    /// Throws platform::Error.
    virtual void Flush() {}
    /// Completes the output. Throws platform::Error.
    virtual void Finish() = 0;
    /// In place of Finish when the session has failed elsewhere; also after a Finish that failed.
    /// Never throws.
    virtual void Abandon() = 0;

    /// What has been written so far; final after Finish.
    virtual OutputResult Result() const = 0;
    /// Adds what it has sent over a network. Any thread, from Begin on.
    virtual void AddTo(platform::NetworkStats& /*stats*/) const {}
    /// A sentence on what Finish did beside completing the output, "" when there is nothing.
    virtual std::string NoticeText() const { return {}; }
    /// A sentence on what a failed session has left and what to do with it, "" when there is
    /// nothing; after Finish or Abandon.
    virtual std::string RemainsText() const { return {}; }
};

}  // namespace engine
