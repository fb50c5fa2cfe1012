#include "platform/host/qt_recent_commands.h"

namespace platform::host {

namespace {

const QString kKey = QStringLiteral("recentCommands");

}  // namespace

const QStringList& RecentCommands::List() {
    if (!read_) {
        commands_ = settings_.value(kKey).toStringList();
        while (commands_.size() > kMost) commands_.removeFirst();
        read_ = true;
    }
    return commands_;
}

void RecentCommands::Add(const QString& command) {
    if (command.trimmed().isEmpty()) return;
    if (!List().isEmpty() && commands_.last() == command) return;
    commands_.append(command);
    if (commands_.size() > kMost) commands_.removeFirst();
    Store();
}

void RecentCommands::Clear() {
    read_ = true;
    commands_.clear();
    Store();
}

void RecentCommands::Store() { settings_.setValue(kKey, commands_); }

}  // namespace platform::host
