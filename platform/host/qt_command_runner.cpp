#include "platform/host/qt_command_runner.h"

#include <QCoreApplication>
#include <QStringList>
#include <utility>

namespace platform::host {

namespace {

QString Text(const char* text) { return QCoreApplication::translate("CommandRunner", text); }

/// A command is split at single blanks, so these are words of their own, which nobody sees.
QString BlankTrouble(const QString& command) {
    if (command.contains(QLatin1String("  "))) return Text("There are two blanks in a row.");
    if (command.endsWith(QLatin1Char(' '))) return Text("There is a blank at the end.");
    if (command.startsWith(QLatin1Char(' '))) return Text("There is a blank at the beginning.");
    return {};
}

/// Parts as sentences, one behind the other.
QString Joined(QStringList parts) {
    for (QString& part : parts) {
        part = part.simplified();
        if (!part.isEmpty() && part.back().isLetterOrNumber()) part += QLatin1Char('.');
    }
    parts.removeAll(QString());
    return parts.join(QLatin1Char(' '));
}

QString StillInForce(const CommandReport& report) {
    QStringList words;
    for (const std::string& word : report.carried_over) words << QString::fromStdString(word);
    if (words.isEmpty()) return {};
    return Text("Still in force: %1. File > New session forgets them.")
        .arg(words.join(QLatin1String(", ")));
}

}  // namespace

CommandRunner::CommandRunner(QWidget& window, CommandEdit& command, CommandQueue& queue,
                             MessageLine& message, RunWatch& watch,
                             std::function<void()> clear_figures)
    : command_(command),
      queue_(queue),
      message_(message),
      clear_figures_(std::move(clear_figures)),
      question_(window) {
    watch.OnBegin([this] { ShowNotes(); });
    watch.OnNotices([this] { ShowNotes(); });
    watch.OnEnd([this](const CommandReport& report) {
        ShowFailure(report);
        next_call_.Post();
    });
    watch.OnRefused([this](const CommandReport& report) { ShowFailure(report); });
}

void CommandRunner::SetForm(FormEvents& form, const std::string& arguments) {
    form_ = &form;
    arguments_ = QString::fromStdString(arguments);
}

bool CommandRunner::WouldReplaceTheRun() const {
    const QString text = command_.text().isEmpty() ? arguments_ : command_.text();
    // A single word is answered with the help.
    return form_->IsBusy() && text.contains(QLatin1Char(' '));
}

void CommandRunner::Run(std::function<void()> go) {
    const QString command = WithoutProgramName(command_.text());
    if (command != command_.text() && !command.isEmpty()) command_.setText(command);
    if (!WouldReplaceTheRun()) return Start(go);
    question_.Ask({Text("Stop it and run this command?"), Text("&Stop it and run this"),
                   "stopAndRun", [this, go = std::move(go)] { Start(go); }});
}

void CommandRunner::Start(const std::function<void()>& go) {
    command_.Remember();
    given_ = command_.text();
    message_.Clear();
    if (!form_->IsBusy() || WouldReplaceTheRun()) clear_figures_();
    halted_ = false;
    go_ = go;
    go();
    if (!form_->IsBusy()) next_call_.Post();
}

void CommandRunner::RunNext() {
    if (halted_ || form_->IsBusy() || !go_) return;
    const auto next = queue_.Take();
    if (!next) return;
    command_.setText(*next);
    const auto go = go_;
    Start(go);
}

void CommandRunner::ShowFailure(const CommandReport& report) {
    const bool in_vain = report.is_folder && report.files_completed == 0;
    if (!IsFailure(report.last.end) && !in_vain) return;
    QStringList parts;
    // The last notice of a folder is what came of it.
    if (report.is_folder && !report.notices.empty())
        parts << QString::fromStdString(report.notices.back());
    else if (report.last.error)
        parts << QString::fromStdString(report.last.error->description);
    if (report.last.end == CommandEnd::Refused) parts << BlankTrouble(given_);
    parts << QString::fromStdString(report.hint);
    if (report.last.end == CommandEnd::Refused) parts << StillInForce(report);
    const QString text = Joined(parts);
    message_.ShowError(text.isEmpty() ? Text("The command was refused.") : text, given_);
}

void CommandRunner::ShowNotes() {
    const CommandReport report = form_->Report();
    QStringList notes;
    for (const std::string& notice : report.notices) notes << QString::fromStdString(notice);
    notes << StillInForce(report);
    const QString note = Joined(notes);
    if (!note.isEmpty()) message_.ShowNote(note, given_);
}

}  // namespace platform::host
