#include "platform/host/qt_command_edit.h"

#include <QDragEnterEvent>
#include <QKeyEvent>
#include <algorithm>

namespace platform::host {

namespace {

/// Whether the command's splitting at blanks and the reading of "\" as a separator keep it whole.
bool IsOneWord(const QString& path) {
    return std::none_of(path.begin(), path.end(), [](QChar c) {
        return c.isSpace() || !c.isPrint() || c == QLatin1Char('\\');
    });
}

}  // namespace

std::optional<QUrl> DraggedFile(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    if (urls.size() != 1 || !urls.first().isLocalFile()) return std::nullopt;
    return urls.first();
}

CommandEdit::CommandEdit(RecentCommands& recent, QWidget* parent)
    : QLineEdit(parent), recent_(recent) {}

void CommandEdit::Remember() {
    recent_.Add(text());
    back_ = 0;
}

void CommandEdit::Offer(const QString& command) {
    back_ = 0;
    setText(command);
    setFocus(Qt::OtherFocusReason);
}

void CommandEdit::AppendInput(const QUrl& file) {
    const QString path = file.toLocalFile();
    const QString name =
        IsOneWord(path) ? path : QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
    const QString before = text();
    const bool apart = before.isEmpty() || before.endsWith(QLatin1Char(' '));
    Offer(before + (apart ? QString() : QStringLiteral(" ")) + QStringLiteral("-input ") + name);
}

void CommandEdit::keyPressEvent(QKeyEvent* event) {
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (plain && event->key() == Qt::Key_Up) return Walk(1);
    if (plain && event->key() == Qt::Key_Down) return Walk(-1);
    QLineEdit::keyPressEvent(event);
}

void CommandEdit::Walk(qsizetype steps) {
    const QStringList& commands = recent_.List();
    const qsizetype back = std::clamp<qsizetype>(back_ + steps, 0, commands.size());
    if (back == back_) return;
    if (back_ == 0) draft_ = text();
    back_ = back;
    setText(back == 0 ? draft_ : commands[commands.size() - back]);
}

void CommandEdit::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls())
        event->ignore();
    else
        QLineEdit::dragEnterEvent(event);
}

}  // namespace platform::host
