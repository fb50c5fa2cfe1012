#include "platform/host/qt_command_edit.h"

#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QRegularExpression>
#include <algorithm>
#include <limits>

#include "platform/host/qt_command_queue.h"

namespace platform::host {

namespace {

/// Whether the command's splitting at blanks and the reading of "\" as a separator keep it whole.
bool IsOneWord(const QString& path) {
    return std::none_of(path.begin(), path.end(), [](QChar c) {
        return c.isSpace() || !c.isPrint() || c == QLatin1Char('\\');
    });
}

QString FileWord(const QString& path) {
    return IsOneWord(path) ? path : QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
}

QString WithWords(const QString& command, const QString& words) {
    const bool apart = command.isEmpty() || command.endsWith(QLatin1Char(' '));
    return command + (apart ? QString() : QStringLiteral(" ")) + words;
}

bool IsBreak(QChar c) { return c.isSpace() && c != QLatin1Char(' '); }

/// Line ends and tabs as the blanks that the box shows them as; none at the beginning and the end,
/// where a blank is one more word.
QString OnOneLine(const QString& text) {
    static const QRegularExpression breaks(QStringLiteral("\\s*[^\\S ]\\s*"));
    QString line = text;
    line.replace(breaks, QStringLiteral(" "));
    if (!text.isEmpty() && IsBreak(text.front())) line.remove(0, 1);
    if (!text.isEmpty() && IsBreak(text.back())) line.chop(1);
    return line;
}

}  // namespace

std::optional<QUrl> DraggedFile(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    if (urls.size() != 1 || !urls.first().isLocalFile()) return std::nullopt;
    return urls.first();
}

CommandEdit::CommandEdit(RecentCommands& recent, QWidget* parent)
    : QLineEdit(parent), recent_(recent), completer_(*this) {
    setMaxLength(std::numeric_limits<int>::max());  // the usual limit cuts without a word
    connect(this, &QLineEdit::textEdited, this, [this](const QString& text) { Straighten(text); });
}

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
    Offer(WithWords(text(), QStringLiteral("-input ") + FileWord(file.toLocalFile())));
}

void CommandEdit::PutOption(const QString& option, const QString& value) {
    QStringList words = text().split(QLatin1Char(' '));
    const qsizetype place = words.lastIndexOf(
        QRegularExpression(QRegularExpression::anchoredPattern(QRegularExpression::escape(option)),
                           QRegularExpression::CaseInsensitiveOption));
    if (place < 0) return Offer(WithWords(text(), option + QLatin1Char(' ') + value));
    if (place + 1 < words.size() && !words[place + 1].startsWith(QLatin1Char('-')))
        words[place + 1] = value;
    else
        words.insert(place + 1, value);
    Offer(words.join(QLatin1Char(' ')));
}

void CommandEdit::PutFile(const QString& option, const QString& path) {
    PutOption(option, FileWord(path));
}

void CommandEdit::Straighten(const QString& edited) {
    QStringList commands = CommandsOf(edited);
    if (!commands.isEmpty() && on_more_commands_) {
        setText(commands.takeFirst());
        return on_more_commands_(commands);
    }
    const QString straight = OnOneLine(edited);
    if (straight == edited) return;
    const qsizetype behind = edited.size() - cursorPosition();
    setText(straight);
    setCursorPosition(static_cast<int>(std::max<qsizetype>(straight.size() - behind, 0)));
}

void CommandEdit::keyPressEvent(QKeyEvent* event) {
    const bool takes = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
                       event->key() == Qt::Key_Tab;
    if (takes && completer_.HasChosen()) return event->ignore();  // the list takes it
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
