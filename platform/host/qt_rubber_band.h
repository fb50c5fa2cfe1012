// Choosing a region of the screen by drawing a box around it.
#pragma once

#include <QPixmap>
#include <QPoint>
#include <QRect>
#include <QScreen>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace platform::host {

/// Covers one monitor with its own picture, darkened outside of the box that is drawn, and says how
/// large the box is. Escape and the other buttons end it without one.
class RubberBand : public QWidget {
  public:
    /// Gets the box in pixels of the whole screen, or nothing. Called once.
    using Done = std::function<void(std::optional<QRect>)>;

    RubberBand(QScreen& screen, Done done);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QRect Box() const;
    QRect PixelsOf(const QRect& box) const;
    void End(std::optional<QRect> pixels);

    QScreen& screen_;
    Done done_;
    QPixmap picture_;
    std::optional<QPoint> from_;
    QPoint to_;
};

/// One band a monitor. User-interface thread.
class RegionChooser {
  public:
    /// Shows the bands; one that is being drawn already ends.
    void Start(const RubberBand::Done& done);

  private:
    void End();

    std::vector<std::unique_ptr<RubberBand>> bands_;
};

}  // namespace platform::host
