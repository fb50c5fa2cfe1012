// Where the global hotkeys are chosen.
#pragma once

#include <QDialog>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QPushButton>
#include <array>

#include "platform/host/qt_window_options.h"

namespace platform::host {

/// A field for one key. Escape is the dialog's.
class HotkeyEdit : public QKeySequenceEdit {
  public:
    explicit HotkeyEdit(QWidget* parent);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};

/// Accepting it keeps the keys in the options; it cannot be accepted with keys that cannot be
/// global or that another program holds, and says why. One key may start and stop. Named
/// "hotkeyDialog", its fields "startKey", "pauseKey" and "stopKey", its warning "hotkeyWarning".
class HotkeyDialog : public QDialog {
  public:
    HotkeyDialog(WindowOptions& options, QWidget* parent);

  private:
    struct Row {
        Hotkey hotkey;
        HotkeyEdit& edit;
    };
    std::array<Row, 3> Rows();
    void UseUsual();
    QString Trouble();
    void Check();
    void Keep();

    WindowOptions& options_;
    HotkeyEdit start_;
    HotkeyEdit pause_;
    HotkeyEdit stop_;
    QLabel warning_;
    QPushButton* ok_ = nullptr;
};

}  // namespace platform::host
