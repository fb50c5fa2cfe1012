// All outputs of a run as one: each gets every frame.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/base/output_sink.h"
#include "engine/pipeline/run_parts.h"
#include "engine/pipeline/run_statistics.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// One thread at a time, in the order of OutputSink. The statistics are told what the file holds,
/// and where to ask what has gone over networks.
class RunOutputs {
  public:
    /// @param notices  called from outputs' own threads too
    RunOutputs(const EncodePlan& plan, const RunParts& parts, RunStatistics& statistics,
               const OutputNotices& notices);
    RunOutputs(const RunOutputs&) = delete;
    RunOutputs& operator=(const RunOutputs&) = delete;

    /// Throws what the first output that cannot begin throws; then the others are abandoned.
    void Begin(const OutputHeader& header);
    void Write(const CodedFrame& frame);
    void Flush();
    /// Only those that somebody may be watching.
    void FlushWatched();
    /// Finishes every output, also when one fails, and throws what failed first.
    void Finish();
    void Abandon();
    std::string RemainsText() const;
    /// Of each output that has one.
    std::vector<std::string> Notices() const;

  private:
    void TellStatistics();

    std::vector<std::unique_ptr<OutputSink>> sinks_;
    const OutputSink* file_ = nullptr;  // of those
    RunStatistics& statistics_;
};

}  // namespace engine
