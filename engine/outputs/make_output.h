// Makes the outputs that a plan lists.
#pragma once

#include <memory>

#include "engine/base/output_sink.h"
#include "engine/plan/encode_plan.h"

namespace engine {

/// Touches nothing yet: the output begins with its header.
std::unique_ptr<OutputSink> MakeOutput(const OutputPlan& plan, const OutputNotices& notices);

}  // namespace engine
