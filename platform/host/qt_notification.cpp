#include "platform/host/qt_notification.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFileInfo>
#include <QStringList>
#include <QVariantMap>
#include <memory>

namespace platform::host {

namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kPlay = QStringLiteral("play");
const QString kFolder = QStringLiteral("folder");

QString Text(const char* text) { return QCoreApplication::translate("Notifier", text); }

/// Asked for without an address, the bus's library starts a bus of its own.
bool HasSessionBus() {
    if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return true;
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !folder.isEmpty() && QFileInfo::exists(folder + QStringLiteral("/bus"));
}

}  // namespace

void Notifier::Show(const QString& summary, const QString& body, const QString& file) {
    if (!HasSessionBus()) return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    if (!listens_)
        listens_ = bus.connect(kService, kPath, kService, QStringLiteral("ActionInvoked"), this,
                               SLOT(ActionInvoked(uint, QString)));
    QDBusMessage message =
        QDBusMessage::createMethodCall(kService, kPath, kService, QStringLiteral("Notify"));
    const QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("tessivo")}};
    QStringList buttons;
    if (!file.isEmpty()) buttons << kPlay << Text("Play") << kFolder << Text("Open folder");
    message << QStringLiteral("Tessivo")        // the program's name
            << 0U                               // replaces none
            << QString()                        // icon
            << summary << body.toHtmlEscaped()  // a name may look like markup
            << buttons << hints << -1;          // shown as long as the service likes
    file_ = file;
    message_ = 0;
    const QDBusPendingCall call = bus.asyncCall(message);
    if (file.isEmpty()) return;
    auto watcher = std::make_unique<QDBusPendingCallWatcher>(call, this);
    connect(watcher.get(), &QDBusPendingCallWatcher::finished, this,
            [this, file](QDBusPendingCallWatcher* answered) {
                const QDBusPendingReply<uint> number = *answered;
                if (file == file_ && !number.isError()) message_ = number.value();
                answered->deleteLater();
            });
    static_cast<void>(watcher.release());  // its parent has it
}

void Notifier::ActionInvoked(uint message, const QString& key) {
    if (message == 0 || message != message_ || !on_button_) return;
    if (key == kPlay) on_button_(Button::Play, file_);
    if (key == kFolder) on_button_(Button::ShowFolder, file_);
}

}  // namespace platform::host
