#include "platform/host/qt_controls.h"

#include <QEvent>
#include <QFontDatabase>
#include <QResizeEvent>
#include <QScrollBar>
#include <QTextCursor>
#include <QTextOption>
#include <algorithm>
#include <cmath>
#include <utility>

namespace platform::host {

namespace {

QString FromForm(const std::string& text) {
    return QString::fromStdString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

std::string ToForm(QString text) {
    return text.replace(QStringLiteral("\n"), QStringLiteral("\r\n")).toStdString();
}

}  // namespace

OutputView::OutputView(QWidget* parent) : QPlainTextEdit(parent) {
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setUndoRedoEnabled(false);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setTabChangesFocus(true);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    SetTabs();
}

void OutputView::SetTabs() {
    setTabStopDistance(8 * QFontMetricsF(font()).horizontalAdvance(QLatin1Char(' ')));
}

void OutputView::changeEvent(QEvent* event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange) SetTabs();
}

void OutputView::Append(const QString& text) {
    // A cursor of its own leaves what the user has selected alone.
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    end.insertText(text);
}

void OutputView::ScrollToEnd() {
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
    horizontalScrollBar()->setValue(0);
}

void OutputView::resizeEvent(QResizeEvent* event) {
    const bool at_end = verticalScrollBar()->value() == verticalScrollBar()->maximum();
    QPlainTextEdit::resizeEvent(event);
    if (at_end) verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

ShorteningLabel::ShorteningLabel(QWidget* parent) : QLabel(parent) {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void ShorteningLabel::SetWholeText(const QString& text) {
    whole_text_ = text;
    Shorten();
}

void ShorteningLabel::SetExplanation(const QString& text) {
    explanation_ = text;
    Shorten();
}

void ShorteningLabel::Shorten() {
    const QString shown =
        fontMetrics().elidedText(whole_text_, Qt::ElideMiddle, contentsRect().width());
    setText(shown);
    const QString whole = whole_text_.trimmed();
    setToolTip(shown == whole_text_ || explanation_.contains(whole) ? explanation_ : whole);
}

QSize ShorteningLabel::minimumSizeHint() const { return {0, QLabel::minimumSizeHint().height()}; }

void ShorteningLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    Shorten();
}

std::string QtCommandBox::Text() const { return edit_.text().toStdString(); }

void QtCommandBox::SetText(const std::string& text) {
    edit_.setText(QString::fromStdString(text));
    edit_.setCursorPosition(0);  // the beginning says what the command does
}

void QtCommandBox::AppendText(const std::string& text) { SetText(Text() + text); }

void QtCommandBox::ScrollToEnd() { edit_.end(false); }

std::string QtPane::Text() const { return ToForm(view_.toPlainText()); }

void QtPane::SetText(const std::string& text) { view_.setPlainText(FromForm(text)); }

void QtPane::AppendText(const std::string& text) { view_.Append(FromForm(text)); }

void QtPane::ScrollToEnd() { view_.ScrollToEnd(); }

std::string QtButton::Caption() const { return button_.text().toStdString(); }

void QtButton::SetCaption(const std::string& caption) {
    const QString text = QString::fromStdString(caption);
    button_.setText(text);
    button_.setAccessibleName(QString(text).remove(QLatin1Char('&')));
}

QtLabel::QtLabel(QLabel& label, QString name, bool prefix)
    : label_(label), name_(std::move(name)), prefix_(prefix) {
    label_.setTextFormat(Qt::PlainText);  // a file's name may look like markup
    label_.setAccessibleName(name_);
}

void QtLabel::SetCaption(const std::string& caption) {
    caption_ = caption;
    const QString text = FromForm(caption);
    if (auto* shortening = dynamic_cast<ShorteningLabel*>(&label_))
        shortening->SetWholeText(text);
    else
        label_.setText(text);
    const QString spoken = QString(text).replace(QLatin1Char('\n'), QLatin1Char(' ')).simplified();
    if (spoken.isEmpty())
        label_.setAccessibleName(name_);
    else
        label_.setAccessibleName(prefix_ ? name_ + QStringLiteral(": ") + spoken : spoken);
}

QtBar::QtBar(QProgressBar& bar) : bar_(bar) {
    bar_.setRange(0, 1000);
    bar_.setValue(0);
}

void QtBar::SetMin(float minimum) {
    min_ = minimum;
    Show();
}

void QtBar::SetMax(float maximum) {
    max_ = maximum;
    Show();
}

void QtBar::SetValue(float value) {
    value_ = value;
    Show();
}

void QtBar::Show() {
    const float range = max_ - min_;
    const float part = range > 0 ? std::clamp((value_ - min_) / range, 0.0F, 1.0F) : 0.0F;
    bar_.setValue(static_cast<int>(std::lround(part * 1000)));
}

QtTimer::QtTimer() {
    timer_.setTimerType(Qt::PreciseTimer);
    // Qt does not fire a timer again inside its own handler; a queued call is outside of it.
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
        if (!std::exchange(on_its_way_, true)) tick_call_.Post();
    });
}

void QtTimer::Deliver() {
    on_its_way_ = false;
    if (timer_.isActive() && on_tick_) on_tick_();
}

void QtTimer::SetInterval(int milliseconds) {
    interval_ = std::max(milliseconds, 0);
    Restart();
}

void QtTimer::SetEnabled(bool enabled) {
    if (std::exchange(enabled_, enabled) != enabled) Restart();
}

void QtTimer::Restart() {
    timer_.stop();
    if (enabled_ && interval_ > 0) timer_.start(interval_);
}

}  // namespace platform::host
