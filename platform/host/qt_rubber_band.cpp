#include "platform/host/qt_rubber_band.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

namespace platform::host {

namespace {

constexpr int kFewestPixels = 2;  // of a picture that can be recorded
constexpr int kMargin = 6;        // of the texts
const QColor kShade(0, 0, 0, 110);
const QColor kFrame(0xff, 0x50, 0x30);

void DrawNote(QPainter& painter, const QString& text, QRect place, const QRect& within) {
    place.moveLeft(std::clamp(place.left(), within.left(), within.right() - place.width()));
    place.moveTop(std::clamp(place.top(), within.top(), within.bottom() - place.height()));
    painter.fillRect(place, QColor(0, 0, 0, 200));
    painter.setPen(Qt::white);
    painter.drawText(place, Qt::AlignCenter, text);
}

}  // namespace

RubberBand::RubberBand(QScreen& screen, Done done)
    : screen_(screen), done_(std::move(done)), picture_(screen.grabWindow(0)) {
    // A window manager would keep it out of the panels and decorate it.
    setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                   Qt::X11BypassWindowManagerHint);
    setObjectName(QStringLiteral("rubberBand"));
    setAccessibleName(tr("Region of the screen"));
    setAccessibleDescription(tr("Draw a box around what is to be recorded; Escape ends it"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setCursor(Qt::CrossCursor);
    setGeometry(screen.geometry());
}

QRect RubberBand::Box() const {
    if (!from_) return {};
    const QPoint first(std::min(from_->x(), to_.x()), std::min(from_->y(), to_.y()));
    const QPoint last(std::max(from_->x(), to_.x()), std::max(from_->y(), to_.y()));
    return QRect(first, last).intersected(rect());
}

// The toolkit's units may be several pixels; only where a monitor begins is counted in pixels.
QRect RubberBand::PixelsOf(const QRect& box) const {
    const double scale = screen_.devicePixelRatio();
    const auto pixels = [&](int units) { return static_cast<int>(std::lround(units * scale)); };
    const QPoint begin = screen_.geometry().topLeft();
    return {begin.x() + pixels(box.x()), begin.y() + pixels(box.y()), pixels(box.width()),
            pixels(box.height())};
}

void RubberBand::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (picture_.isNull())
        painter.fillRect(rect(), Qt::darkGray);
    else
        painter.drawPixmap(rect(), picture_);
    const QRect box = Box();
    for (const QRect& shaded : QRegion(rect()).subtracted(box)) painter.fillRect(shaded, kShade);
    const QFontMetrics metrics = painter.fontMetrics();
    const auto note = [&](const QString& text) {
        return QRect(0, 0, metrics.horizontalAdvance(text) + 2 * kMargin,
                     metrics.height() + 2 * kMargin);
    };
    if (box.isEmpty()) {
        const QString text = tr("Draw a box around what is to be recorded; Escape ends it");
        QRect place = note(text);
        place.moveCenter({rect().center().x(), rect().top() + 4 * metrics.height()});
        DrawNote(painter, text, place, rect());
        return;
    }
    painter.setPen(QPen(kFrame, 1));
    painter.drawRect(box.adjusted(-1, -1, 0, 0));
    const QRect pixels = PixelsOf(box);
    const QString text = QStringLiteral("%1 x %2").arg(pixels.width()).arg(pixels.height());
    QRect place = note(text);
    place.moveTopLeft(box.bottomLeft() + QPoint(0, kMargin));
    DrawNote(painter, text, place, rect());
}

void RubberBand::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return End({});
    from_ = to_ = event->position().toPoint();
    update();
}

void RubberBand::mouseMoveEvent(QMouseEvent* event) {
    if (!from_) return;
    to_ = event->position().toPoint();
    update();
}

void RubberBand::mouseReleaseEvent(QMouseEvent* event) {
    if (!from_ || event->button() != Qt::LeftButton) return;
    to_ = event->position().toPoint();
    const QRect pixels = PixelsOf(Box());
    if (pixels.width() >= kFewestPixels && pixels.height() >= kFewestPixels) return End(pixels);
    from_.reset();  // a click is no box
    update();
}

void RubberBand::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) End({});
}

void RubberBand::End(std::optional<QRect> pixels) {
    if (const Done done = std::exchange(done_, nullptr)) done(pixels);
}

void RegionChooser::Start(const RubberBand::Done& done) {
    End();
    for (QScreen* screen : QGuiApplication::screens())
        bands_.push_back(
            std::make_unique<RubberBand>(*screen, [this, done](std::optional<QRect> pixels) {
                End();
                done(pixels);
            }));
    for (const auto& band : bands_) band->show();
    if (bands_.empty()) return;
    // Such windows get no keys by themselves.
    bands_.front()->activateWindow();
    bands_.front()->grabKeyboard();
}

void RegionChooser::End() {
    // The one that ends them is still in its handler.
    for (auto& band : bands_) {
        band->releaseKeyboard();
        band->hide();
        band.release()->deleteLater();
    }
    bands_.clear();
}

}  // namespace platform::host
