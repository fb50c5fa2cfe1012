#include "platform/host/qt_program.h"

#include <QApplication>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "platform/host/locale_text.h"
#include "platform/host/qt_window.h"
#include "platform/host/stop_signals.h"
#include "platform/posix/file_descriptor.h"

namespace platform::host {

namespace {

/// Qt ends the process by a core dump when it finds no display; this says what to do instead.
void ReportNoDisplay(QtMsgType type, const QMessageLogContext& /*context*/,
                     const QString& /*text*/) {
    if (type != QtFatalMsg) return;
    static_cast<void>(
        std::fputs("tessivo: cannot open a window: there is no display, or it does not answer.\n"
                   "Start it from a desktop, or use tessivo-console, which takes the same command "
                   "line.\n",
                   stderr));
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

int RunWindow(const std::vector<std::string>& words, const ProgramInfo& program,
              EngineMakers makers, const FormMaker& make_form, FileRepair repair,
              ScreenPartsFinder screen_parts, SoundMeterMaker sound_meter) {
    OccupyStandardDescriptors();
    if (const auto answer = AnswerAboutProgram(program, words)) {
        return std::fputs(answer->c_str(), stdout) < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
    }
    UseLocale();

    // Signals are blocked before the toolkit starts threads of its own, so that none of those
    // takes one.
    QtWindow* open_window = nullptr;
    QtLoop signal_loop;
    const StopSignals signals(signal_loop, [&open_window] {
        if (open_window != nullptr) open_window->EndUnattended();
    });

    // The command line has options of the same names as the toolkit's ("-title"): it sees none.
    std::string name = program.name;
    char* arguments[] = {name.data(), nullptr};
    int argument_count = 1;
    const QtMessageHandler usual_handler = qInstallMessageHandler(ReportNoDisplay);
    const QApplication application(argument_count, arguments);
    qInstallMessageHandler(usual_handler);
    std::setlocale(LC_NUMERIC, "C");  // the toolkit takes the desktop's; reports keep their point
    QApplication::setApplicationName(QString::fromStdString(program.name));
    QApplication::setApplicationVersion(QString::fromStdString(program.version));
    QApplication::setDesktopFileName(QString::fromStdString(program.name));

    QtWindow window(JoinWords(words));
    HostFactory factory(window.Loop(), std::move(makers),
                        [&signals] { return signals.Received(); });
    const std::unique_ptr<FormEvents> form = make_form(window, factory);
    window.SetForm(*form);
    window.SetRepair(std::move(repair));
    window.SetScreenParts(std::move(screen_parts));
    window.SetSoundMeter(std::move(sound_meter));
    open_window = &window;
    window.show();
    form->Form_Load();
    QApplication::exec();
    open_window = nullptr;
    return Number(signals.Received() ? ExitStatus::StoppedBySignal : ExitStatus::Done);
}

}  // namespace platform::host
