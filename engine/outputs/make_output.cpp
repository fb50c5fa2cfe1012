#include "engine/outputs/make_output.h"

#include <variant>

#include "engine/outputs/asf/asf_file.h"

namespace engine {
namespace {

// One for each kind of output: a kind that lacks its maker does not build.
struct Maker {
    std::unique_ptr<OutputSink> operator()(const FileOutput& file) const {
        return std::make_unique<asf::AsfFile>(file.path, file.keeps_existing);
    }
};

}  // namespace

std::unique_ptr<OutputSink> MakeOutput(const OutputPlan& plan) { return std::visit(Maker{}, plan); }

}  // namespace engine
