// What the window does outside of itself: tray, global hotkeys, notifications.
#pragma once

#include <QString>
#include <QWidget>
#include <functional>
#include <memory>
#include <utility>

#include "platform/host/qt_file_opener.h"
#include "platform/host/qt_hotkey_dialog.h"
#include "platform/host/qt_hotkeys.h"
#include "platform/host/qt_notification.h"
#include "platform/host/qt_run_watch.h"
#include "platform/host/qt_tray.h"
#include "platform/host/qt_window_options.h"

namespace platform::host {

/// User-interface thread; everything handed over must outlive it.
class Desktop {
  public:
    /// @param say  shows one line in the window
    Desktop(QWidget& window, RunWatch& watch, WindowOptions& options, RunCommands commands,
            FileOpener& opener, std::function<void(const QString&)> say);

    /// Takes keys and shows the tray's icon, for which other programs are asked: once the window
    /// has been painted.
    void Begin();
    void SetOption(WindowOption option, bool on);
    void ChooseHotkeys();

  private:
    void TakeHotkeys();
    QString Take(Hotkey hotkey, const std::function<void()>& handler);
    void OnCommandEnd(const CommandReport& report);
    void OnRefused(const CommandReport& report);
    bool IsSeen() const;

    QWidget& window_;
    RunWatch& watch_;
    WindowOptions& options_;
    const RunCommands commands_;
    const std::function<void(const QString&)> say_;
    Hotkeys hotkeys_;
    Notifier notifier_;
    std::unique_ptr<HotkeyDialog> dialog_;
    std::unique_ptr<Tray> tray_;
};

}  // namespace platform::host
