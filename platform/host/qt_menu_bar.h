// The window's menus and their shortcuts.
#pragma once

#include <QMenu>
#include <QMenuBar>

#include "platform/host/qt_command_edit.h"
#include "platform/host/qt_menu_commands.h"
#include "platform/host/qt_recent_commands.h"

namespace platform::host {

/// Actions are named after what they do ("listDevices"), menus too ("recentMenu"). The commands,
/// the box and the recent commands must outlive it.
class WindowMenuBar : public QMenuBar {
  public:
    WindowMenuBar(MenuCommands& commands, CommandEdit& command, RecentCommands& recent,
                  QWidget* parent);

  private:
    QMenu& Menu(const char* name, const QString& title);
    void FillRecent(QMenu& menu);
    void FillProfiles(QMenu& menu);

    MenuCommands& commands_;
    CommandEdit& command_;
    RecentCommands& recent_;
};

}  // namespace platform::host
