#include "platform/host/qt_notification.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFileInfo>
#include <QVariantMap>

namespace platform::host {

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");

/// Asked for without an address, the bus's library starts a bus of its own.
bool HasSessionBus() {
    if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return true;
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !folder.isEmpty() && QFileInfo::exists(folder + QStringLiteral("/bus"));
}

}  // namespace

void ShowNotification(const QString& summary, const QString& body) {
    if (!HasSessionBus()) return;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    QDBusMessage message =
        QDBusMessage::createMethodCall(kService, QStringLiteral("/org/freedesktop/Notifications"),
                                       kService, QStringLiteral("Notify"));
    const QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("tessivo")}};
    message << QStringLiteral("Tessivo")        // the program's name
            << 0U                               // replaces none
            << QString()                        // icon
            << summary << body.toHtmlEscaped()  // a name may look like markup
            << QStringList()                    // no buttons
            << hints << -1;                     // shown as long as the service likes
    bus.send(message);
}

}  // namespace platform::host
