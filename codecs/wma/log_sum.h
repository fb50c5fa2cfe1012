// Sums of many logarithms.
#pragma once

#include <cmath>

namespace codecs::wma {

/// Multiplies and takes a logarithm now and then. Values from 1e-15 to 1e15.
class LogSum {
  public:
    void Add(double value) {
        product_ *= value;
        if (++factors_ < kFactors) return;
        sum_ += std::log2(product_);
        product_ = 1;
        factors_ = 0;
    }
    /// To the base 2.
    double Get() const { return sum_ + std::log2(product_); }

  private:
    static constexpr int kFactors = 16;

    double sum_ = 0;
    double product_ = 1;
    int factors_ = 0;
};

}  // namespace codecs::wma
