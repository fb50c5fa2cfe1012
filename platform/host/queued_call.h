// A call that the window's thread makes later, as an event of its own.
#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <functional>
#include <memory>
#include <utility>

namespace platform::host {

/// Lives on the user-interface thread; calls that wait when it goes are dropped.
class QueuedCall : public QObject {
  public:
    explicit QueuedCall(std::function<void()> handler) : handler_(std::move(handler)) {}

    /// One call of the handler for each Post. Any thread.
    void Post() {
        QCoreApplication::postEvent(this, std::make_unique<QEvent>(QEvent::User).release());
    }

  protected:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::User) return QObject::event(event);
        handler_();
        return true;
    }

  private:
    std::function<void()> handler_;
};

}  // namespace platform::host
