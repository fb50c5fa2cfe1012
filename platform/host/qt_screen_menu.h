// The menu that says which part of the screen is recorded.
#pragma once

#include <QActionGroup>
#include <QMenu>
#include <QRect>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <utility>

#include "platform/host/qt_rubber_band.h"
#include "platform/screen_parts.h"

namespace platform::host {

/// Sets the variable TESSIVO_SCREEN of this process, which the next recording of the screen goes
/// by, and shows what it is. Only X11 lets a program choose.
class ScreenMenu : public QMenu {
  public:
    /// @param say  shows one line of what was chosen
    ScreenMenu(const QString& title, std::function<void(const QString&)> say, QWidget* parent);

    void SetFinder(ScreenPartsFinder finder) { finder_ = std::move(finder); }

  private:
    void Fill();
    void FillWindows(const ScreenParts& parts);
    void AddChoice(QMenu& menu, const char* name, const QString& text, const QString& choice);
    void ChooseRegion();
    void Choose(const QString& choice);

    std::function<void(const QString&)> say_;
    ScreenPartsFinder finder_;
    QMenu windows_;
    std::unique_ptr<QActionGroup> group_;
    bool has_chosen_ = false;  // an entry stands for the choice
    QTimer menu_gone_;
    RegionChooser chooser_;
};

/// What the variable holds for such a box.
QString RegionChoice(const QRect& pixels);

}  // namespace platform::host
