// What the last run has made, and what can be done with it.
#pragma once

#include <QHBoxLayout>
#include <QPushButton>
#include <QString>
#include <QWidget>

#include "platform/host/qt_controls.h"
#include "platform/host/qt_file_opener.h"
#include "platform/run_report.h"

namespace platform::host {

/// How a run has ended, in words.
struct ResultText {
    QString headline;  // "lesson.wmv is recorded"
    QString details;   // "0:12, 3.4 MB" of a file; the reason of an error; may be empty
};
ResultText TextOf(const CommandReport& report, bool capture);

/// The file that can be played; "" where there is none.
QString PlayableFile(const CommandReport& report, bool capture);

/// Takes no room until a run has made a file. Named "resultBar", its buttons "playResult" and
/// "showResultFolder". User-interface thread; the opener must outlive it.
class ResultBar : public QWidget {
  public:
    ResultBar(FileOpener& opener, QWidget* parent);

    void Show(const CommandReport& report, bool capture);

  private:
    FileOpener& opener_;
    QString file_;
    QHBoxLayout layout_;
    ShorteningLabel label_;
    QPushButton play_;
    QPushButton folder_;
};

}  // namespace platform::host
