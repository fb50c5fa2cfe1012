// A frame around the part of the screen that is recorded.
#pragma once

#include <QRect>
#include <QWidget>
#include <memory>
#include <vector>

namespace platform::host {

/// Lies outside of the box on all sides, so it is never part of a recording of it; the mouse works
/// through it. User-interface thread.
class RegionFrame {
  public:
    /// A Wayland desktop lets no program say where its windows lie.
    static bool IsOffered();

    /// @param pixels  of the whole screen
    void ShowAround(const QRect& pixels);
    void Hide() { sides_.clear(); }

  private:
    std::vector<std::unique_ptr<QWidget>> sides_;
};

/// The smallest box of the toolkit's units that has all of the pixels of the whole screen.
QRect UnitsAround(const QRect& pixels);
/// All monitors together, in pixels of the whole screen.
QRect ScreenPixels();

}  // namespace platform::host
