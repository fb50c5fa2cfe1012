#include "platform/host/qt_desktop.h"

#include <QCoreApplication>
#include <QDir>
#include <QStringList>

#include "platform/host/qt_result_bar.h"

namespace platform::host {

namespace {

QString Text(const char* text) { return QCoreApplication::translate("Desktop", text); }

}  // namespace

Desktop::Desktop(QWidget& window, RunWatch& watch, WindowOptions& options, RunCommands commands,
                 FileOpener& opener, std::function<void(const QString&)> say)
    : window_(window),
      watch_(watch),
      options_(options),
      commands_(std::move(commands)),
      say_(std::move(say)) {
    watch_.OnEnd([this](const CommandReport& report) { OnCommandEnd(report); });
    watch_.OnRefused([this](const CommandReport& report) { OnRefused(report); });
    notifier_.OnButton([&opener](Notifier::Button button, const QString& file) {
        if (button == Notifier::Button::Play)
            opener.Play(file);
        else
            opener.ShowFolder(file);
    });
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
    const auto stop = [this] {
        if (commands_.is_busy()) commands_.stop();
    };
    const auto start = [this] {
        if (!commands_.is_busy()) commands_.start();
    };
    const auto start_or_stop = [start, stop, this] { commands_.is_busy() ? stop() : start(); };
    if (options_.Key(Hotkey::Start) == options_.Key(Hotkey::Stop)) {
        troubles << Take(Hotkey::Stop, start_or_stop);
    } else {
        troubles << Take(Hotkey::Start, start);
        troubles << Take(Hotkey::Stop, stop);
    }
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

bool Desktop::IsSeen() const {
    return window_.isVisible() && window_.isActiveWindow() && !window_.isMinimized();
}

void Desktop::OnCommandEnd(const CommandReport& report) {
    if (!options_.Is(WindowOption::Notify)) return;
    const bool capture = watch_.IsCapture();
    if (IsSeen() && !capture) return;
    const ResultText text = TextOf(report, capture);
    const QString file = PlayableFile(report, capture);
    QStringList lines{text.details};
    const bool failed = report.last.end == CommandEnd::Failed;
    if (!failed) lines << QDir::toNativeSeparators(QString::fromStdString(report.last.output));
    lines.removeAll(QString());
    notifier_.Show(text.headline, lines.join(QLatin1Char('\n')), file);
}

// Of a command that a hotkey has run there would be nothing to see.
void Desktop::OnRefused(const CommandReport& report) {
    if (!options_.Is(WindowOption::Notify) || IsSeen()) return;
    notifier_.Show(
        Text("The command did not run"),
        report.last.error ? QString::fromStdString(report.last.error->description) : QString());
}

}  // namespace platform::host
