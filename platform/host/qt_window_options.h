// What the window does beside commands, kept in the user's settings.
#pragma once

#include <QKeySequence>
#include <QSettings>

namespace platform::host {

enum class WindowOption {
    MinimiseOnStart,  // when a recording starts
    RegionFrame,      // around a region while it is recorded
    TrayIcon,
    Notify,     // when a run has ended
    ShowLevel,  // of the sound that is recorded
};
enum class Hotkey { Start, Pause, Stop };

/// The settings must outlive it.
class WindowOptions {
  public:
    explicit WindowOptions(QSettings& settings) : settings_(settings) {}

    bool Is(WindowOption option) const;
    void Set(WindowOption option, bool on);
    /// Seconds before a recording begins; 0 = none.
    int CountdownSeconds() const;
    void SetCountdownSeconds(int seconds);
    /// Empty = switched off.
    QKeySequence Key(Hotkey hotkey) const;
    void SetKey(Hotkey hotkey, const QKeySequence& keys);
    static QKeySequence UsualKey(Hotkey hotkey);

  private:
    QSettings& settings_;
};

}  // namespace platform::host
