// What is seen of a picture before it is coded.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "codecs/common/index.h"
#include "codecs/wmv9/frame.h"
#include "codecs/wmv9/kernels.h"

namespace codecs::wmv9 {

/// Of all samples of luma.
struct Brightness {
    double mean = 0;
    double deviation = 0;
};

Brightness MeasureBrightness(const Kernels& kernels, const Frame& frame);

struct Activity {
    Brightness brightness;
    /// Of macroblocks in raster order: logarithms to base 2 of their variances, beside the mean of
    /// those.
    std::vector<double> values;
};

/// Measures pictures, and keeps what was seen of the last few: trials code the next pictures again
/// and again.
class ActivityMeter {
  public:
    /// In macroblocks.
    ActivityMeter(int width, int height) : width_(width), rows_(Index(height)) {}

    /// Whether the picture has to be measured. It is the one that the other calls are about.
    /// @param number  of the picture, -1 = unknown
    bool Begin(int number);
    /// Measures a row of macroblocks; rows may be measured side by side.
    void MeasureRow(const Kernels& kernels, const Frame& source, int y);
    /// After all rows.
    void End();
    /// After End, or where there was nothing to measure.
    const Activity& Found() const { return kept_[current_].activity; }

  private:
    struct Kept {
        int number = -1;
        Activity activity;
    };
    struct Row {
        std::int64_t sum = 0;
        std::int64_t squares = 0;
    };

    int width_;
    std::vector<Row> rows_;
    std::array<Kept, 10> kept_;
    std::size_t current_ = 0;
};

}  // namespace codecs::wmv9
