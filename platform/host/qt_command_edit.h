// The command box: recent commands on the arrow keys, and names of files that are dropped.
#pragma once

#include <QLineEdit>
#include <QMimeData>
#include <QUrl>
#include <functional>
#include <optional>
#include <utility>

#include "platform/host/qt_command_completer.h"
#include "platform/host/qt_recent_commands.h"

namespace platform::host {

/// The one local file or folder that is dragged; nothing for several, and for other things.
std::optional<QUrl> DraggedFile(const QMimeData& data);

/// Up and Down walk through the recent commands like a shell's; past the newest is the text that
/// stood in the box before. The lines of a pasted command become one, joined by blanks. What is
/// dragged as a file is left to the window around it.
class CommandEdit : public QLineEdit {
  public:
    /// The commands must outlive the box.
    CommandEdit(RecentCommands& recent, QWidget* parent);

    /// The box's text becomes a recent command, and the walk begins anew.
    void Remember();
    /// Puts a command into the box, to be changed or run.
    void Offer(const QString& command);
    /// Puts the option with its value into the command, in the place of one that it has already.
    void PutOption(const QString& option, const QString& value);
    /// The same for a file's name, as a URI where a plain name would not stay one word.
    void PutFile(const QString& option, const QString& path);
    /// Several commands are pasted, as CommandsOf parts them; the handler gets all but the first.
    void OnMoreCommands(std::function<void(const QStringList&)> handler) {
        on_more_commands_ = std::move(handler);
    }
    CommandCompleter& Completer() { return completer_; }
    /// Appends `-input` and the file's name, as a URI where a plain name would not stay one word.
    void AppendInput(const QUrl& file);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;

  private:
    void Straighten(const QString& edited);
    void Walk(qsizetype steps);

    RecentCommands& recent_;
    CommandCompleter completer_;
    std::function<void(const QStringList&)> on_more_commands_;
    qsizetype back_ = 0;  // 0 = the draft, 1 = the newest command
    QString draft_;
};

}  // namespace platform::host
