// The menu over the run, and over what the window does beside it.
#pragma once

#include <QActionGroup>
#include <QMenu>
#include <QString>

#include "platform/host/qt_desktop.h"
#include "platform/host/qt_run_watch.h"
#include "platform/host/qt_window_options.h"

namespace platform::host {

/// Actions: "pauseRun", "minimiseOnStart", "regionFrame", "trayIcon", "notify", "countdownOff",
/// "countdown3" (5, 10), "hotkeys". Everything handed over
/// must outlive it.
class EncodingMenu : public QMenu {
  public:
    EncodingMenu(const QString& title, RunWatch& watch, WindowOptions& options, Desktop& desktop,
                 const RunCommands& commands, QWidget* parent);

  private:
    void AddCountdown(WindowOptions& options);
    QAction& Add(const char* name, const QString& text, const QString& tip);

    QActionGroup countdown_{this};
};

}  // namespace platform::host
