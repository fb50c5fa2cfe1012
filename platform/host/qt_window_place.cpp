#include "platform/host/qt_window_place.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

namespace platform::host {

namespace {

const QString kKey = QStringLiteral("geometry");
constexpr QSize kFrame(8, 40);  // what a desktop puts around a window, at most

}  // namespace

void RestorePlace(QWidget& window, const QSettings& settings) {
    const bool has_place = window.restoreGeometry(settings.value(kKey).toByteArray());
    const QScreen* screen =
        has_place ? QGuiApplication::screenAt(window.geometry().center()) : nullptr;
    if (screen == nullptr) screen = window.screen();
    const QRect room = screen->availableGeometry();
    const QSize most = room.size() - kFrame;
    window.setMinimumSize(window.minimumSize().boundedTo(most));
    if (window.isMaximized()) return;
    window.resize(window.size().boundedTo(most));
    if (!has_place) return;
    const QSize spare = most - window.size();
    const QPoint place(std::clamp(window.x(), room.x(), room.x() + spare.width()),
                       std::clamp(window.y(), room.y(), room.y() + spare.height()));
    // Moving means the frame, which is not there yet: the window would creep from start to start.
    if (place != window.pos()) window.move(place);
}

void KeepPlace(const QWidget& window, QSettings& settings) {
    settings.setValue(kKey, window.saveGeometry());
}

}  // namespace platform::host
