#include "engine/encoders/first_pass_report.h"

#include <array>
#include <cstdlib>
#include <string_view>

#include "engine/pipeline/av_ptr.h"

namespace engine {
namespace {

// The estimate is of each frame by itself, the encoder smooths over frames.
constexpr double kMargin = 1.25;

// The number behind " name:" in an entry; 0 when it is absent.
double Field(std::string_view entry, std::string_view name) {
    const std::size_t at = entry.find(name);
    if (at == std::string_view::npos) return 0;
    const std::string number(entry.substr(at + name.size(), 20));
    return std::strtod(number.c_str(), nullptr);
}

}  // namespace

FirstPassReport::FirstPassReport(std::string text) : text_(std::move(text)) {
    std::string_view rest = text_;
    for (std::size_t end = rest.find(';'); end != std::string_view::npos; end = rest.find(';')) {
        const std::string_view entry = rest.substr(0, end);
        ++frames_;
        texture_ += Field(entry, " q:") * (Field(entry, " itex:") + Field(entry, " ptex:") + 1);
        fixed_ += Field(entry, " mv:") + Field(entry, " misc:");
        rest.remove_prefix(end + 1);
    }
}

bool FirstPassReport::Fits(double bits, int coarsest) const {
    return frames_ > 0 && (texture_ / (coarsest * FF_QP2LAMBDA) + fixed_) * kMargin < bits;
}

}  // namespace engine
