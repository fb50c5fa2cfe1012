#include "engine/outputs/make_output.h"

#include <utility>
#include <variant>

#include "engine/outputs/asf/asf_file.h"
#include "engine/outputs/http/broadcast.h"
#include "engine/outputs/push/push.h"

namespace engine {
namespace {

// One for each kind of output: a kind that lacks its maker does not build.
struct Maker {
    const OutputNotices& notices;

    std::unique_ptr<OutputSink> operator()(const FileOutput& file) const {
        return std::make_unique<asf::AsfFile>(file.path, file.keeps_existing);
    }
    std::unique_ptr<OutputSink> operator()(const BroadcastOutput& broadcast) const {
        return std::make_unique<http::Broadcast>(broadcast, notices);
    }
    std::unique_ptr<OutputSink> operator()(const PushOutput& push) const {
        return std::make_unique<push::Push>(push, notices);
    }
};

}  // namespace

std::unique_ptr<OutputSink> MakeOutput(const OutputPlan& plan, const OutputNotices& notices) {
    return std::visit(Maker{notices}, plan);
}

}  // namespace engine
