#include "platform/host/qt_command_queue.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <algorithm>

namespace platform::host {

namespace {

constexpr int kMostLines = 5;  // in view

QString Text(const char* text) { return QCoreApplication::translate("CommandQueue", text); }

const QRegularExpression& ProgramName() {
    static const QRegularExpression name(
        QStringLiteral("^\\s*(\\$\\s+)?(\\S*/)?tessivo(-console)?(\\s+|$)"));
    return name;
}

bool IsComment(const QString& line) { return line.isEmpty() || line.startsWith(QLatin1Char('#')); }

bool StandsAlone(const QString& line) {
    return ProgramName().match(line).hasMatch() ||
           line.split(QLatin1Char(' ')).contains(QLatin1String("-output"), Qt::CaseInsensitive);
}

}  // namespace

QString WithoutProgramName(const QString& command) {
    QString text = command;
    return text.remove(ProgramName());
}

QStringList CommandsOf(const QString& lines) {
    static const QRegularExpression continued(QStringLiteral("\\s*\\\\\\s*[\\r\\n\\x{2028}]+\\s*"));
    static const QRegularExpression breaks(QStringLiteral("[\\r\\n\\x{2028}]+"));
    QString text = lines;
    text.replace(continued, QStringLiteral(" "));
    QStringList commands;
    for (const QString& line : text.split(breaks)) {
        if (IsComment(line.trimmed())) continue;
        if (!StandsAlone(line)) return {};
        commands << WithoutProgramName(line.trimmed());
    }
    return commands.size() > 1 ? commands : QStringList();
}

CommandQueue::CommandQueue(QWidget* parent)
    : QWidget(parent),
      layout_(this),
      caption_(Text("Ne&xt commands, a line each:"), this),
      lines_(this) {
    setObjectName(QStringLiteral("commandQueue"));
    setAccessibleName(Text("Next commands"));
    lines_.setObjectName(QStringLiteral("queuedCommands"));
    lines_.setAccessibleName(Text("Next commands, a line each"));
    lines_.setTabChangesFocus(true);
    lines_.setLineWrapMode(QPlainTextEdit::NoWrap);
    caption_.setBuddy(&lines_);
    layout_.setContentsMargins(0, 0, 0, 0);
    layout_.addWidget(&caption_);
    layout_.addWidget(&lines_);
    QObject::connect(&lines_, &QPlainTextEdit::textChanged, this, [this] { Fit(); });
    hide();
}

void CommandQueue::Add(const QStringList& commands) {
    QString text = lines_.toPlainText();
    if (!text.isEmpty() && !text.endsWith(QLatin1Char('\n'))) text += QLatin1Char('\n');
    lines_.setPlainText(text + commands.join(QLatin1Char('\n')));
}

std::optional<QString> CommandQueue::Take() {
    QStringList lines = lines_.toPlainText().split(QLatin1Char('\n'));
    std::optional<QString> first;
    while (!lines.isEmpty() && !first) {
        const QString line = lines.takeFirst().trimmed();
        if (!IsComment(line)) first = WithoutProgramName(line);
    }
    lines_.setPlainText(lines.join(QLatin1Char('\n')));
    return first;
}

void CommandQueue::Fit() {
    const int lines = std::clamp(lines_.document()->blockCount(), 2, kMostLines);
    lines_.setFixedHeight((lines + 1) * lines_.fontMetrics().lineSpacing());
    // Who empties it by hand may still be writing in it.
    if (!lines_.toPlainText().isEmpty())
        show();
    else if (!lines_.hasFocus())
        hide();
}

}  // namespace platform::host
