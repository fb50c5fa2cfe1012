#include "platform/host/qt_region_frame.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPalette>
#include <QScreen>
#include <cmath>

namespace platform::host {

namespace {

constexpr int kThickness = 3;
const QColor kColour(0xff, 0x50, 0x30);

// The toolkit's units may be several pixels; only where a monitor begins is counted in pixels.
QRect PixelsOf(const QScreen& screen) {
    const double scale = screen.devicePixelRatio();
    const QRect box = screen.geometry();
    return {box.x(), box.y(), static_cast<int>(std::lround(box.width() * scale)),
            static_cast<int>(std::lround(box.height() * scale))};
}

const QScreen& ScreenOf(QPoint pixel) {
    for (const QScreen* screen : QGuiApplication::screens())
        if (PixelsOf(*screen).contains(pixel)) return *screen;
    return *QGuiApplication::primaryScreen();
}

std::unique_ptr<QWidget> Side(const QRect& place) {
    auto side = std::make_unique<QWidget>(
        nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                     Qt::X11BypassWindowManagerHint | Qt::WindowTransparentForInput |
                     Qt::WindowDoesNotAcceptFocus);
    side->setObjectName(QStringLiteral("regionFrame"));
    side->setAccessibleName(
        QCoreApplication::translate("RegionFrame", "Frame around the recorded region"));
    side->setAttribute(Qt::WA_ShowWithoutActivating);
    side->setAttribute(Qt::WA_QuitOnClose, false);
    QPalette palette;
    palette.setColor(QPalette::Window, kColour);
    side->setPalette(palette);
    side->setGeometry(place);
    side->show();
    return side;
}

}  // namespace

bool RegionFrame::IsOffered() { return !qEnvironmentVariableIsSet("WAYLAND_DISPLAY"); }

void RegionFrame::ShowAround(const QRect& pixels) {
    Hide();
    if (!IsOffered()) return;
    const QRect inner = UnitsAround(pixels);
    const QRect outer = inner.adjusted(-kThickness, -kThickness, kThickness, kThickness);
    for (const QRect& place : QRegion(outer).subtracted(inner)) sides_.push_back(Side(place));
}

QRect UnitsAround(const QRect& pixels) {
    const QScreen& screen = ScreenOf(pixels.center());
    const double scale = screen.devicePixelRatio();
    const QPoint begin = screen.geometry().topLeft();
    const auto first = [&](int pixel, int from) {
        return from + static_cast<int>(std::floor((pixel - from) / scale));
    };
    const auto behind = [&](int pixel, int from) {
        return from + static_cast<int>(std::ceil((pixel - from) / scale));
    };
    const QPoint top_left(first(pixels.left(), begin.x()), first(pixels.top(), begin.y()));
    const QPoint bottom_right(behind(pixels.left() + pixels.width(), begin.x()) - 1,
                              behind(pixels.top() + pixels.height(), begin.y()) - 1);
    return {top_left, bottom_right};
}

QRect ScreenPixels() {
    QRect all;
    for (const QScreen* screen : QGuiApplication::screens()) all |= PixelsOf(*screen);
    return all;
}

}  // namespace platform::host
