// A display of the test's own, for what needs a desktop.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/commands.h"

namespace test_support {

/// Xvfb, which keeps what clients have set up after the last one has left.
class XServer {
  public:
    /// @param screen   width, height and bits a pixel, as in "320x240x24"
    /// @param options  further ones of Xvfb
    /// Throws std::runtime_error when it does not start.
    explicit XServer(const std::string& screen, const std::vector<std::string>& options = {});

    /// What the variable DISPLAY takes.
    const std::string& display() const { return display_; }

    void Signal(int number) const { process_->Signal(number); }
    void Kill();

    /// Runs xrandr with these words; a failure is a failure of the test.
    void Randr(std::vector<std::string> words) const;
    /// Makes the screen, which has one monitor, smaller or as large again.
    void Resize(int width, int height) const;

  private:
    TempFolder folder_;
    std::unique_ptr<BackgroundCommand> process_;
    std::string display_;
};

}  // namespace test_support
