#include "platform/host/qt_broadcast_bar.h"

#include <QClipboard>
#include <QGuiApplication>

namespace platform::host {

BroadcastBar::BroadcastBar(QWidget* parent)
    : QWidget(parent), layout_(this), address_label_(this), copy_(this), listeners_(this) {
    setObjectName(QStringLiteral("broadcastBar"));
    setAccessibleName(QObject::tr("Broadcast"));
    address_label_.setObjectName(QStringLiteral("broadcastAddress"));
    address_label_.setAccessibleName(QObject::tr("Address of the broadcast"));
    address_label_.setTextFormat(Qt::PlainText);
    address_label_.setTextInteractionFlags(Qt::TextSelectableByMouse);
    copy_.setObjectName(QStringLiteral("copyAddress"));
    copy_.setText(QObject::tr("Copy &address"));
    copy_.setAutoDefault(true);
    copy_.setToolTip(QObject::tr("Copies the address, to be pasted into a player or a message"));
    copy_.setStatusTip(copy_.toolTip());
    copy_.setAccessibleDescription(copy_.toolTip());
    listeners_.setObjectName(QStringLiteral("listeners"));
    listeners_.setAccessibleName(QObject::tr("Listeners"));
    listeners_.setTextFormat(Qt::PlainText);
    listeners_.setToolTip(QObject::tr("How many players are connected now, and at most so far"));
    layout_.setContentsMargins(0, 0, 0, 0);
    layout_.addWidget(&address_label_, 1);
    layout_.addWidget(&listeners_);
    layout_.addWidget(&copy_);
    QObject::connect(&copy_, &QPushButton::clicked, this, [this] { Copy(); });
    hide();
}

void BroadcastBar::Show(const NetworkStats& network) {
    setVisible(network.broadcast && !network.broadcast->addresses.empty());
    if (!isVisibleTo(parentWidget())) return;
    const BroadcastStats& stats = *network.broadcast;
    address_ = QString::fromStdString(stats.addresses.front());
    const QString text = QObject::tr("Broadcasting at %1").arg(address_);
    QStringList all;
    for (const std::string& address : stats.addresses) all << QString::fromStdString(address);
    address_label_.SetExplanation(all.join(QLatin1Char('\n')));
    address_label_.SetWholeText(text);
    address_label_.setAccessibleName(text);
    const QString listeners = stats.clients == 1 ? QObject::tr("1 listener, at most %2")
                                                 : QObject::tr("%1 listeners, at most %2");
    listeners_.setText(QString(listeners)
                           .replace(QStringLiteral("%1"), QString::number(stats.clients))
                           .replace(QStringLiteral("%2"), QString::number(stats.most_clients)));
    listeners_.setAccessibleName(listeners_.text());
}

void BroadcastBar::Copy() const { QGuiApplication::clipboard()->setText(address_); }

}  // namespace platform::host
