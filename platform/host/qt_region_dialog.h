// Where a region of the screen is given by numbers.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QRect>
#include <QSpinBox>

#include "platform/host/qt_region_frame.h"

namespace platform::host {

/// Shows a frame around what the numbers say; cannot be accepted with a region that is not on the
/// screen. Named "regionDialog", its fields "regionWidth", "regionHeight", "regionLeft" and
/// "regionTop", its warning "regionWarning".
class RegionDialog : public QDialog {
  public:
    /// @param region  what the fields begin with, in pixels of the whole screen
    /// @param screen  what it has to lie in; empty where only the desktop knows
    RegionDialog(const QRect& region, const QRect& screen, QWidget* parent);

    QRect Region() const;

  private:
    void Check();

    const QRect screen_;
    QSpinBox width_;
    QSpinBox height_;
    QSpinBox left_;
    QSpinBox top_;
    QLabel warning_;
    QPushButton* ok_ = nullptr;
    RegionFrame frame_;
};

}  // namespace platform::host
