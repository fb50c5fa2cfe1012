// What the encoder's run has done so far; after it, what it had done at its end.
#pragma once

#include <memory>

#include "engine/object_model/run_control.h"

namespace engine {

/// All numbers are zero before the first run.
class Statistics : public platform::WMEncStatistics {
  public:
    explicit Statistics(std::shared_ptr<const RunControl> control) : control_(std::move(control)) {}

    platform::Currency EncodingTime() override;
    platform::OutputStats StreamOutputStats(platform::SourceType type, int stream,
                                            int output) override;
    platform::OutputStats WMFOutputStats() override;
    platform::FileArchiveStats FileArchiveStats() override;
    platform::NetworkStats NetworkStats() override;

  private:
    std::shared_ptr<const RunControl> control_;
};

}  // namespace engine
