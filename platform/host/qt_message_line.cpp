#include "platform/host/qt_message_line.h"

#include <QAccessible>
#include <QEvent>
#include <QPalette>
#include <QStyle>

namespace platform::host {

namespace {

// Both have a contrast of at least 5 to 1 to the backgrounds that themes of their kind have.
const QColor kOnLight(0xa8, 0x1c, 0x0c);
const QColor kOnDark(0xff, 0xa0, 0x8c);
constexpr int kDark = 128;  // lightness below which a background is dark

}  // namespace

MessageLine::MessageLine(QWidget* parent)
    : QWidget(parent), layout_(this), icon_(this), label_(this) {
    setObjectName(QStringLiteral("messageLine"));
    setAccessibleName(QObject::tr("Message"));
    label_.setObjectName(QStringLiteral("message"));
    label_.setTextFormat(Qt::PlainText);
    label_.setAccessibleName(accessibleName());
    label_.setTextInteractionFlags(Qt::TextSelectableByMouse);
    icon_.setAccessibleName(QObject::tr("Kind of message"));
    layout_.setContentsMargins(0, 0, 0, 0);
    layout_.addWidget(&icon_);
    layout_.addWidget(&label_, 1);
    hide();
}

void MessageLine::ShowError(const QString& text, const QString& more) {
    has_error_ = true;
    Say(text, more);
}

void MessageLine::ShowNote(const QString& text, const QString& more) {
    if (!has_error_) Say(text, more);
}

void MessageLine::Clear() {
    has_error_ = false;
    text_.clear();
    label_.SetWholeText(QString());
    label_.setAccessibleName(accessibleName());
    hide();
}

void MessageLine::Say(const QString& text, const QString& more) {
    const bool news = text != text_;
    text_ = text;
    const auto icon = has_error_ ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxInformation;
    const int size = label_.fontMetrics().height();
    icon_.setPixmap(style()->standardIcon(icon).pixmap(size, size));
    Colour();
    label_.SetExplanation(more.isEmpty() ? text : text + QLatin1Char('\n') + more);
    label_.SetWholeText(text);
    label_.setAccessibleName(text);
    label_.setAccessibleDescription(more);
    show();
    if (!news) return;
    QAccessibleEvent alert(&label_, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void MessageLine::Colour() {
    QPalette palette = parentWidget()->palette();
    const bool dark = palette.color(QPalette::Window).lightness() < kDark;
    if (has_error_) palette.setColor(QPalette::WindowText, dark ? kOnDark : kOnLight);
    label_.setPalette(palette);
}

void MessageLine::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) Colour();
}

}  // namespace platform::host
