// The question that is asked before a running encoding is ended.
#pragma once

#include <QMessageBox>
#include <QString>
#include <QWidget>
#include <functional>
#include <memory>

namespace platform::host {

/// One question at a time, named "question"; its button that keeps the run, which Enter and Escape
/// press, is "keepRunning". User-interface thread; the window must outlive it.
class RunQuestion {
  public:
    explicit RunQuestion(QWidget& window) : window_(window) {}

    struct Offer {
        QString question;         // what happens to the run
        QString yes;              // the other button
        const char* button_name;  // its object name
        std::function<void()> on_yes;
    };
    /// Opens without a loop of its own, so that what waits below the window's can end. Nothing
    /// while it is open already.
    void Ask(const Offer& offer);

  private:
    QWidget& window_;
    std::unique_ptr<QMessageBox> box_;
};

}  // namespace platform::host
