#include "platform/host/qt_desktop.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include "platform/host/qt_notification.h"

namespace platform::host {

namespace {

QString Text(const char* text) { return QCoreApplication::translate("Desktop", text); }

QString Named(const std::string& path) {
    return QFileInfo(QString::fromStdString(path)).fileName();
}

void Notify(const CommandReport& report, bool capture) {
    const FileReport& last = report.last;
    const QString output = QString::fromStdString(last.output);
    if (last.end == CommandEnd::Failed || last.end == CommandEnd::Refused) {
        const QString name = output.isEmpty() ? Named(last.input) : QFileInfo(output).fileName();
        QString reason = last.error ? QString::fromStdString(last.error->description) : QString();
        ShowNotification(capture ? Text("The recording %1 ended with an error").arg(name)
                                 : Text("Encoding %1 failed").arg(name),
                         reason);
    } else if (report.is_folder) {
        ShowNotification(Text("The folder is done"),
                         Text("%1 files were encoded").arg(report.files_completed));
    } else {
        ShowNotification(capture ? Text("%1 is recorded").arg(QFileInfo(output).fileName())
                                 : Text("%1 is encoded").arg(QFileInfo(output).fileName()),
                         QDir::toNativeSeparators(output));
    }
}

}  // namespace

Desktop::Desktop(QWidget& window, RunWatch& watch, WindowOptions& options, RunCommands commands,
                 std::function<void(const QString&)> say)
    : window_(window),
      watch_(watch),
      options_(options),
      commands_(std::move(commands)),
      say_(std::move(say)) {
    watch_.OnBegin([this] { OnRunBegin(); });
    watch_.OnEnd([this](const CommandReport& report) { OnCommandEnd(report); });
}

void Desktop::Begin() {
    tray_ = std::make_unique<Tray>(window_, watch_, commands_);
    tray_->SetWanted(options_.Is(WindowOption::TrayIcon));
    TakeHotkeys();
}

void Desktop::SetOption(WindowOption option, bool on) {
    options_.Set(option, on);
    if (option == WindowOption::TrayIcon && tray_ != nullptr) tray_->SetWanted(on);
}

void Desktop::ChooseHotkeys() {
    hotkeys_.ReleaseAll();  // or the dialog would not see them
    dialog_ = std::make_unique<HotkeyDialog>(options_, &window_);
    QObject::connect(dialog_.get(), &QDialog::finished, &window_, [this] { TakeHotkeys(); });
    dialog_->open();
}

void Desktop::TakeHotkeys() {
    hotkeys_.ReleaseAll();
    if (!Hotkeys::AreOffered()) return;
    QStringList troubles;
    troubles << Take(Hotkey::Pause, [this] {
        if (watch_.CanPause()) commands_.pause_or_resume();
    });
    troubles << Take(Hotkey::Stop, [this] {
        if (watch_.CanPause()) commands_.stop();
    });
    troubles.removeAll(QString());
    if (!troubles.isEmpty()) say_(troubles.join(QLatin1Char(' ')));
}

QString Desktop::Take(Hotkey hotkey, const std::function<void()>& handler) {
    const QKeySequence keys = options_.Key(hotkey);
    if (keys.isEmpty()) return {};
    const QString name = keys.toString(QKeySequence::NativeText);
    switch (hotkeys_.Take(keys, handler)) {
        case Hotkeys::Answer::Held:
            return Text("Another program holds the hotkey %1.").arg(name);
        case Hotkeys::Answer::Unknown:
            return Text("%1 cannot be a global hotkey.").arg(name);
        case Hotkeys::Answer::Taken:
            break;
    }
    return {};
}

void Desktop::OnRunBegin() {
    if (watch_.IsCapture() && options_.Is(WindowOption::MinimiseOnStart) && window_.isVisible())
        window_.showMinimized();
}

void Desktop::OnCommandEnd(const CommandReport& report) {
    if (!options_.Is(WindowOption::Notify)) return;
    const bool seen = window_.isVisible() && window_.isActiveWindow() && !window_.isMinimized();
    if (!seen || watch_.IsCapture()) Notify(report, watch_.IsCapture());
}

}  // namespace platform::host
