// The menu that says which part of the screen is recorded.
#pragma once

#include <QActionGroup>
#include <QMenu>
#include <QRect>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "platform/host/qt_region_dialog.h"
#include "platform/host/qt_rubber_band.h"
#include "platform/screen_parts.h"

namespace platform::host {

/// Sets the variables TESSIVO_SCREEN and TESSIVO_POINTER of this process, which the next recording
/// of the screen goes by, and shows what they are. Only X11 lets a program choose all of it.
class ScreenMenu : public QMenu {
  public:
    /// @param say  shows one line of what was chosen
    ScreenMenu(const QString& title, std::function<void(const QString&)> say, QWidget* parent);

    void SetFinder(ScreenPartsFinder finder) { finder_ = std::move(finder); }

  private:
    void Fill();
    void FillWindows(const ScreenParts& parts);
    void AddChoice(QMenu& menu, const char* name, const QString& text, const QString& choice);
    void AddRegion(bool can_choose);
    void AddPointer();
    void ChooseRegion();
    void AskForNumbers(bool can_choose);
    void Choose(const QString& choice);

    std::function<void(const QString&)> say_;
    ScreenPartsFinder finder_;
    QMenu windows_;
    std::unique_ptr<QActionGroup> group_;
    bool has_chosen_ = false;  // an entry stands for the choice
    QTimer menu_gone_;
    RegionChooser chooser_;
    std::unique_ptr<RegionDialog> dialog_;
};

/// What the variable holds for such a box.
QString RegionChoice(const QRect& pixels);
/// The box that it holds; nothing where another part, or all of the screen is chosen.
std::optional<QRect> ChosenRegion();

}  // namespace platform::host
