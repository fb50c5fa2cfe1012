#include "engine/pipeline/run_outputs.h"

#include <utility>
#include <variant>

#include "platform/error.h"

namespace engine {

RunOutputs::RunOutputs(const EncodePlan& plan, const RunParts& parts, RunStatistics& statistics,
                       const OutputNotices& notices)
    : statistics_(statistics) {
    for (const OutputPlan& output : plan.outputs) {
        sinks_.push_back(parts.make_output(output, notices));
        if (file_ == nullptr && std::holds_alternative<FileOutput>(output))
            file_ = sinks_.back().get();
    }
    statistics_.NetworkIs([this] {
        platform::NetworkStats stats;
        for (const auto& sink : sinks_) sink->AddTo(stats);
        return stats;
    });
}

void RunOutputs::Begin(const OutputHeader& header) {
    try {
        for (const auto& sink : sinks_) sink->Begin(header);
    } catch (const platform::Error&) {
        for (const auto& sink : sinks_) sink->Abandon();
        throw;
    }
}

void RunOutputs::Write(const CodedFrame& frame) {
    for (const auto& sink : sinks_) sink->Write(frame);
    TellStatistics();
}

void RunOutputs::Flush() {
    for (const auto& sink : sinks_) sink->Flush();
    TellStatistics();
}

void RunOutputs::FlushWatched() {
    for (const auto& sink : sinks_)
        if (sink.get() != file_) sink->Flush();
}

void RunOutputs::Finish() {
    platform::ErrorTrap trap;
    for (const auto& sink : sinks_) trap([&] { sink->Finish(); });
    if (trap.HasError()) throw platform::Error(trap.UnsignedNumber(), trap.Description());
    TellStatistics();
}

void RunOutputs::Abandon() {
    for (const auto& sink : sinks_) sink->Abandon();
    TellStatistics();
}

std::string RunOutputs::RemainsText() const {
    std::string text;
    for (const auto& sink : sinks_) {
        const std::string remains = sink->RemainsText();
        if (!text.empty() && !remains.empty()) text += ". ";
        text += remains;
    }
    return text;
}

std::vector<std::string> RunOutputs::Notices() const {
    std::vector<std::string> notices;
    for (const auto& sink : sinks_)
        if (std::string notice = sink->NoticeText(); !notice.empty())
            notices.push_back(std::move(notice));
    return notices;
}

void RunOutputs::TellStatistics() {
    if (file_ != nullptr) statistics_.FileIs(file_->Result());
}

}  // namespace engine
