#include "platform/host/qt_tray.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPixmap>
#include <utility>

#include "platform/host/time_left.h"

namespace platform::host {

namespace {

constexpr int kTick = 1000;  // milliseconds
constexpr int kIconSizes[] = {16, 22, 24, 32, 48, 64};

QString Text(const char* text) { return QCoreApplication::translate("Tray", text); }

/// States differ by shape and not by colour alone: a ring, a dot, two bars.
QPixmap Picture(int size, RunPhase phase, bool capture) {
    QPixmap picture(size, size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 16.0, size / 16.0);
    const QColor grey(0x80, 0x80, 0x80);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(grey, 2));
    painter.drawEllipse(QRectF(1.5, 1.5, 13, 13));
    painter.setPen(Qt::NoPen);
    if (phase == RunPhase::Paused) {
        painter.setBrush(QColor(0xf0, 0x9a, 0x00));
        painter.drawRect(QRectF(5, 4.5, 2.2, 7));
        painter.drawRect(QRectF(8.8, 4.5, 2.2, 7));
    } else if (phase != RunPhase::Idle) {
        painter.setBrush(capture ? QColor(0xd8, 0x20, 0x20) : QColor(0x20, 0x78, 0xd8));
        painter.drawEllipse(QRectF(4, 4, 8, 8));
    }
    return picture;
}

QIcon StateIcon(RunPhase phase, bool capture) {
    QIcon icon;
    for (const int size : kIconSizes) icon.addPixmap(Picture(size, phase, capture));
    return icon;
}

}  // namespace

QString RunText(const RunWatch& watch) {
    const QString time = QString::fromStdString(ClockText(watch.EncodedMs() / 1000));
    switch (watch.phase()) {
        case RunPhase::Running:
            return (watch.IsCapture() ? Text("recording, %1") : Text("encoding, %1")).arg(time);
        case RunPhase::Paused:
            return Text("paused, %1").arg(time);
        case RunPhase::Stopping:
            return Text("finishing the file");
        case RunPhase::Idle:
            break;
    }
    return Text("idle");
}

Tray::Tray(QWidget& window, RunWatch& watch, RunCommands commands)
    : window_(window), watch_(watch) {
    FillMenu(std::move(commands));
    tick_.setInterval(kTick);
    QObject::connect(&tick_, &QTimer::timeout, &tick_, [this] { Tick(); });
    watch_.OnPhase([this] {
        if (icon_ == nullptr) SetWanted(wanted_);  // the desktop may have a tray by now
        Update();
    });
}

void Tray::FillMenu(RunCommands commands) {
    menu_.setObjectName(QStringLiteral("trayMenu"));
    menu_.setAccessibleName(Text("Tessivo in the tray"));
    const auto add = [this](const char* name, const QString& text, std::function<void()> run) {
        QAction* const action = menu_.addAction(text);
        action->setObjectName(QLatin1String(name));
        QObject::connect(action, &QAction::triggered, &menu_, std::move(run));
        return action;
    };
    show_or_hide_ = add("trayShow", QString(), [this] { ShowOrHide(); });
    menu_.addSeparator();
    pause_ = add("trayPause", QString(), std::move(commands.pause_or_resume));
    stop_ = add("trayStop", Text("&Stop"), std::move(commands.stop));
    menu_.addSeparator();
    // The window asks, when it has to, where it can be seen.
    add("trayQuit", Text("&Quit"), [this, quit = std::move(commands.quit)] {
        if (watch_.phase() != RunPhase::Idle) ShowWindow();
        quit();
    });
    QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this] { Update(); });
}

void Tray::SetWanted(bool wanted) {
    wanted_ = wanted;
    if (!wanted) {
        if (icon_ != nullptr && !window_.isVisible()) ShowWindow();
        icon_.reset();
        tick_.stop();
        return;
    }
    if (icon_ != nullptr || !QSystemTrayIcon::isSystemTrayAvailable()) return;
    icon_ = std::make_unique<QSystemTrayIcon>();
    icon_->setContextMenu(&menu_);
    QObject::connect(icon_.get(), &QSystemTrayIcon::activated, &menu_,
                     [this](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger) ShowOrHide();
                     });
    Update();
    icon_->show();
}

void Tray::Update() {
    show_or_hide_->setText(window_.isVisible() && !window_.isMinimized()
                               ? Text("&Hide the window")
                               : Text("S&how the window"));
    pause_->setText(watch_.phase() == RunPhase::Paused ? Text("&Resume") : Text("&Pause"));
    pause_->setEnabled(watch_.CanPause());
    stop_->setEnabled(watch_.CanPause());
    if (icon_ == nullptr) return;
    icon_->setIcon(StateIcon(watch_.phase(), watch_.IsCapture()));
    icon_->setToolTip(Text("Tessivo: %1").arg(RunText(watch_)));
    if (watch_.phase() != RunPhase::Idle || !window_.isVisible())
        tick_.start();
    else
        tick_.stop();
}

void Tray::Tick() {
    if (icon_ == nullptr) return;
    if (!window_.isVisible() && !QSystemTrayIcon::isSystemTrayAvailable()) ShowWindow();
    icon_->setToolTip(Text("Tessivo: %1").arg(RunText(watch_)));
}

void Tray::ShowOrHide() {
    if (window_.isVisible() && !window_.isMinimized())
        window_.hide();
    else
        ShowWindow();
    Update();
}

void Tray::ShowWindow() {
    window_.setWindowState(window_.windowState() & ~Qt::WindowMinimized);
    window_.show();
    window_.raise();
    window_.activateWindow();
}

}  // namespace platform::host
