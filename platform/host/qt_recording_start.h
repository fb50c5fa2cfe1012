// What the window does between a recording's set-up and its first frame.
#pragma once

#include <QWidget>
#include <functional>

#include "platform/event_loop.h"
#include "platform/host/qt_message_line.h"
#include "platform/host/qt_region_frame.h"
#include "platform/host/qt_run_watch.h"
#include "platform/host/qt_window_options.h"

namespace platform::host {

/// Gets out of the way, draws a frame around the region, and counts down, each as the options have
/// it. User-interface thread; everything handed over must outlive it.
class RecordingStart {
  public:
    RecordingStart(QWidget& window, EventLoop& loop, RunWatch& watch, const WindowOptions& options,
                   MessageLine& message);

    /// As FormWindow::BeforeRecording.
    bool Await(bool of_screen, const std::function<bool()>& wanted);

  private:
    bool Minimise(const std::function<bool()>& wanted);
    bool CountDown(QPoint centre, const std::function<bool()>& wanted);
    void Wait(int milliseconds, const std::function<bool()>& done);

    QWidget& window_;
    EventLoop& loop_;
    const WindowOptions& options_;
    MessageLine& message_;
    RegionFrame frame_;
};

}  // namespace platform::host
