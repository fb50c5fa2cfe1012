// Where the window stands and how large it is, from one start to the next.
#pragma once

#include <QSettings>
#include <QWidget>

namespace platform::host {

/// Puts the window where it stood, within the screen that is there now. Without a place that was
/// kept it stands where the desktop puts it, and fits the screen.
void RestorePlace(QWidget& window, const QSettings& settings);
void KeepPlace(const QWidget& window, QSettings& settings);

}  // namespace platform::host
