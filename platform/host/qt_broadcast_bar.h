// Where a running broadcast can be heard, and how many listen to it.
#pragma once

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QString>
#include <QWidget>

#include "platform/host/qt_controls.h"
#include "platform/run_report.h"

namespace platform::host {

/// Takes no room while nothing is broadcast. Its parts are "broadcastAddress", "copyAddress" and
/// "listeners".
class BroadcastBar : public QWidget {
  public:
    explicit BroadcastBar(QWidget* parent);

    void Show(const NetworkStats& network);

  private:
    void Copy() const;

    QHBoxLayout layout_;
    ShorteningLabel address_label_;
    QPushButton copy_;
    QLabel listeners_;
    QString address_;
};

}  // namespace platform::host
