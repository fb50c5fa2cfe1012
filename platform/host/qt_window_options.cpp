#include "platform/host/qt_window_options.h"

#include <algorithm>
#include <cstddef>

namespace platform::host {

namespace {

struct OptionRow {
    WindowOption option;
    const char* key;
    bool usual;
};
struct HotkeyRow {
    Hotkey hotkey;
    const char* key;
    const char* usual;
};

// clang-format off
constexpr OptionRow kOptions[] = {
    // option                      key                 unless chosen
    {WindowOption::MinimiseOnStart, "minimiseOnStart", false},
    {WindowOption::RegionFrame,     "regionFrame",     true},
    {WindowOption::TrayIcon,        "trayIcon",        true},
    {WindowOption::Notify,          "notify",          true},
    {WindowOption::ShowLevel,       "showLevel",       false},
};
constexpr HotkeyRow kHotkeys[] = {
    // hotkey        key            unless chosen
    {Hotkey::Start, "hotkeyStart", ""},
    {Hotkey::Pause, "hotkeyPause", "Ctrl+Shift+F9"},
    {Hotkey::Stop,  "hotkeyStop",  "Ctrl+Shift+F10"},
};
// clang-format on

constexpr const char* kCountdownKey = "countdown";
constexpr int kLongestCountdown = 60;

const OptionRow& Row(WindowOption option) { return kOptions[static_cast<std::size_t>(option)]; }
const HotkeyRow& Row(Hotkey hotkey) { return kHotkeys[static_cast<std::size_t>(hotkey)]; }

}  // namespace

bool WindowOptions::Is(WindowOption option) const {
    return settings_.value(QLatin1String(Row(option).key), Row(option).usual).toBool();
}

void WindowOptions::Set(WindowOption option, bool on) {
    settings_.setValue(QLatin1String(Row(option).key), on);
}

int WindowOptions::CountdownSeconds() const {
    return std::clamp(settings_.value(QLatin1String(kCountdownKey), 0).toInt(), 0,
                      kLongestCountdown);
}

void WindowOptions::SetCountdownSeconds(int seconds) {
    settings_.setValue(QLatin1String(kCountdownKey), seconds);
}

QKeySequence WindowOptions::Key(Hotkey hotkey) const {
    const HotkeyRow& row = Row(hotkey);
    return {settings_.value(QLatin1String(row.key), QLatin1String(row.usual)).toString(),
            QKeySequence::PortableText};
}

void WindowOptions::SetKey(Hotkey hotkey, const QKeySequence& keys) {
    settings_.setValue(QLatin1String(Row(hotkey).key), keys.toString(QKeySequence::PortableText));
}

QKeySequence WindowOptions::UsualKey(Hotkey hotkey) {
    return {QLatin1String(Row(hotkey).usual), QKeySequence::PortableText};
}

}  // namespace platform::host
