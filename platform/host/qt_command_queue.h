// Commands that wait for their turn below the command box.
#pragma once

#include <QLabel>
#include <QPlainTextEdit>
#include <QString>
#include <QStringList>
#include <QVBoxLayout>
#include <QWidget>
#include <optional>

namespace platform::host {

/// The commands of a text of several lines: each begins with the program's name, or names an output
/// of its own. Lines that "\" ends go on in the next, those that "#" begins are comments. Nothing
/// where the lines are one command.
QStringList CommandsOf(const QString& lines);
/// The command without the prompt's "$" and the program's name before it.
QString WithoutProgramName(const QString& command);

/// A line each, to be changed, moved and taken out like any text. Takes no room while it is empty.
/// Named "commandQueue". User-interface thread.
class CommandQueue : public QWidget {
  public:
    explicit CommandQueue(QWidget* parent);

    void Add(const QStringList& commands);
    /// The first command, which leaves the queue.
    std::optional<QString> Take();

  private:
    void Fit();

    QVBoxLayout layout_;
    QLabel caption_;
    QPlainTextEdit lines_;
};

}  // namespace platform::host
