// What assistive programs are told that the program's window is.
#pragma once

#include <QAccessibleWidget>
#include <memory>

namespace platform::host {

/// The toolkit takes a plain widget for a mere filling, also where it is a program's window: those
/// of the type are windows from now on.
template <typename Window>
void SpeakOfAsWindow() {
    struct Interface : QAccessibleWidget {
        explicit Interface(QWidget* window) : QAccessibleWidget(window, QAccessible::Window) {}
    };
    QAccessible::installFactory(
        [](const QString& /*class_name*/, QObject* object) -> QAccessibleInterface* {
            auto* const window = dynamic_cast<Window*>(object);
            return window == nullptr ? nullptr : std::make_unique<Interface>(window).release();
        });
}

}  // namespace platform::host
