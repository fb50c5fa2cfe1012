// The menu that says whose sound is recorded with the screen.
#pragma once

#include <QActionGroup>
#include <QMenu>
#include <QString>
#include <functional>

#include "platform/host/qt_level_meter.h"
#include "platform/host/qt_window_options.h"

namespace platform::host {

/// Sets the variable TESSIVO_SOUND of this process, which the next recording of the screen goes by,
/// and shows what it is.
class SoundMenu : public QMenu {
  public:
    /// @param say  shows one line of what was chosen
    SoundMenu(const QString& title, LevelMeter& meter, WindowOptions& options,
              std::function<void(const QString&)> say, QWidget* parent);

    /// Lets the meter run where the person wants it; once the meter has its maker.
    void Begin();

  private:
    void AddChoice(const char* name, const QString& text, const QString& choice,
                   const QString& note);
    void Choose(const QString& choice, const QString& note);
    void ShowLevel(bool on);

    LevelMeter& meter_;
    WindowOptions& options_;
    std::function<void(const QString&)> say_;
    QActionGroup group_;
    QAction* level_ = nullptr;
};

}  // namespace platform::host
