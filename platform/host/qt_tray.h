// The program's icon in the desktop's tray.
#pragma once

#include <QAction>
#include <QIcon>
#include <QMenu>
#include <QString>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>

#include "platform/host/qt_run_watch.h"

namespace platform::host {

/// What the tray and the hotkeys can ask of the window.
struct RunCommands {
    std::function<bool()> is_busy;
    std::function<void()> start;
    std::function<void()> pause_or_resume;
    std::function<void()> stop;
    std::function<void()> quit;
};

/// "idle", "recording, 0:01:23" ...
QString RunText(const RunWatch& watch);

/// Shows the run's state, its playing time in the tool tip, and a menu ("trayMenu"). A window that
/// was hidden by it comes back when the tray goes. Everything handed over must outlive it.
class Tray {
  public:
    Tray(QWidget& window, RunWatch& watch, RunCommands commands);

    /// With an icon from now on, where the desktop has a tray.
    void SetWanted(bool wanted);
    bool IsShown() const { return icon_ != nullptr && icon_->isVisible(); }

  private:
    void FillMenu(RunCommands commands);
    void Update();
    void Tick();
    void ShowOrHide();
    void ShowWindow();

    QWidget& window_;
    RunWatch& watch_;
    bool wanted_ = false;
    QMenu menu_;
    QAction* show_or_hide_ = nullptr;
    QAction* pause_ = nullptr;
    QAction* stop_ = nullptr;
    QTimer tick_;
    std::unique_ptr<QSystemTrayIcon> icon_;
};

}  // namespace platform::host
