// What plays a finished file, and shows its folder.
#pragma once

#include <QString>
#include <QUrl>
#include <functional>
#include <utility>

#include "platform/host/qt_message_line.h"

namespace platform::host {

/// By the programs that the desktop has for them. Where it has none, the message line says so, and
/// it must outlive the object. User-interface thread.
class FileOpener {
  public:
    explicit FileOpener(MessageLine& message);

    /// Another way to open things than the desktop's; false = it cannot.
    void Use(std::function<bool(const QUrl&)> open) { open_ = std::move(open); }
    void Play(const QString& file);
    void ShowFolder(const QString& file);

  private:
    void Open(const QString& path);

    MessageLine& message_;
    std::function<bool(const QUrl&)> open_;
};

}  // namespace platform::host
