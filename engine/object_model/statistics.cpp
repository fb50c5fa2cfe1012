#include "engine/object_model/statistics.h"

#include <fmt/format.h>

#include "engine/plan/value_checks.h"

namespace engine {

platform::Currency Statistics::EncodingTime() {
    return control_->Run() == nullptr ? platform::Currency()
                                      : control_->Run()->Figures().EncodingTime();
}

platform::OutputStats Statistics::StreamOutputStats(platform::SourceType type, int stream,
                                                    int output) {
    CheckAudioOrVideo(type);
    CheckStream(stream);
    if (output != 0)
        RefuseArgument(fmt::format("There is no output {}: the only output is 0", output));
    if (control_->Run() == nullptr) return {};
    const bool audio = type == platform::SourceType::Audio;
    if (!control_->RunHas(type))
        RefuseArgument(fmt::format("The session has no {} stream", audio ? "audio" : "video"));
    return control_->Run()->Figures().Of(audio ? MediaKind::Audio : MediaKind::Video);
}

platform::OutputStats Statistics::WMFOutputStats() {
    return control_->Run() == nullptr ? platform::OutputStats()
                                      : control_->Run()->Figures().Total();
}

platform::FileArchiveStats Statistics::FileArchiveStats() {
    if (control_->Run() == nullptr)
        throw platform::Error(platform::kFileNotFound,
                              "No file has been written: there was no run yet");
    return control_->Run()->Figures().File();
}

platform::NetworkStats Statistics::NetworkStats() {
    return control_->Run() == nullptr ? platform::NetworkStats()
                                      : control_->Run()->Figures().Network();
}

}  // namespace engine
