// Asks in the window who somebody is.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QLineEdit>

#include "platform/credentials.h"
#include "platform/event_loop.h"

namespace platform::host {

/// Its fields are "pushUser" and "pushPassword", whose text is not shown; it can be accepted once
/// there is a user name. Named "credentialsDialog".
class CredentialsDialog : public QDialog {
  public:
    /// The question must outlive it.
    CredentialsDialog(const CredentialsQuestion& question, QWidget* parent);

    /// Runs the loop until the person has answered or the answer is not wanted any more.
    CredentialsAnswer Ask(EventLoop& loop);

  private:
    const CredentialsQuestion& question_;
    QLabel explanation_;
    QLineEdit user_;
    QLineEdit password_;
};

}  // namespace platform::host
