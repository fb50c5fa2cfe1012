// A message of the desktop's notification service.
#pragma once

#include <QString>

namespace platform::host {

/// Returns at once. Where there is no such service, nothing happens. Plain texts.
void ShowNotification(const QString& summary, const QString& body);

}  // namespace platform::host
