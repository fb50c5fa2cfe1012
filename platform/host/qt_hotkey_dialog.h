// Where the global hotkeys are chosen.
#pragma once

#include <QDialog>
#include <QKeySequenceEdit>

#include "platform/host/qt_window_options.h"

namespace platform::host {

/// Accepting it keeps the keys in the options. Named "hotkeyDialog", its fields "pauseKey" and
/// "stopKey".
class HotkeyDialog : public QDialog {
  public:
    HotkeyDialog(WindowOptions& options, QWidget* parent);

  private:
    void UseUsual();
    void Keep();

    WindowOptions& options_;
    QKeySequenceEdit pause_;
    QKeySequenceEdit stop_;
};

}  // namespace platform::host
