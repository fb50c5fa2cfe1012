#include "platform/host/qt_recording_start.h"

#include <QCoreApplication>
#include <QLabel>
#include <QScreen>
#include <QTimer>
#include <QWindow>
#include <optional>

#include "platform/host/qt_screen_menu.h"

namespace platform::host {

namespace {

constexpr int kSecond = 1000;       // milliseconds
constexpr int kMostPatience = 500;  // ms, for a desktop that minimises slowly or not at all
constexpr int kRepainted = 150;     // ms, until all have painted what a window covered
constexpr int kBorder = 2;
constexpr int kDigits = 6;  // their height, in lines of text

QString Text(const char* text) { return QCoreApplication::translate("RecordingStart", text); }

/// The seconds that are left, large.
class CountdownView : public QLabel {
  public:
    explicit CountdownView(QPoint centre)
        : QLabel(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                              Qt::X11BypassWindowManagerHint | Qt::WindowTransparentForInput |
                              Qt::WindowDoesNotAcceptFocus) {
        setObjectName(QStringLiteral("countdown"));
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_QuitOnClose, false);
        setAlignment(Qt::AlignCenter);
        setFrameStyle(QFrame::Box | QFrame::Plain);
        setLineWidth(kBorder);
        const int side = kDigits * fontMetrics().height();
        QFont large = font();
        large.setPixelSize(side * 3 / 4);
        setFont(large);
        QPalette colours;
        colours.setColor(QPalette::Window, Qt::black);
        colours.setColor(QPalette::WindowText, Qt::white);
        setPalette(colours);
        QRect place(0, 0, side, side);
        place.moveCenter(centre);
        setGeometry(place);
    }
};

}  // namespace

RecordingStart::RecordingStart(QWidget& window, EventLoop& loop, RunWatch& watch,
                               const WindowOptions& options, MessageLine& message)
    : window_(window), loop_(loop), options_(options), message_(message) {
    watch.OnPhase([this, &watch] {
        if (watch.phase() == RunPhase::Idle) frame_.Hide();
    });
}

bool RecordingStart::Await(bool of_screen, const std::function<bool()>& wanted) {
    const std::optional<QRect> region = ChosenRegion();
    if (of_screen && region && options_.Is(WindowOption::RegionFrame)) frame_.ShowAround(*region);
    const bool minimised = Minimise(wanted);
    const QRect place = of_screen && region ? UnitsAround(*region) : window_.screen()->geometry();
    const bool counted = CountDown(place.center(), wanted);
    if (minimised || counted) Wait(kRepainted, [&] { return !wanted(); });
    if (wanted()) return true;
    frame_.Hide();
    return false;
}

bool RecordingStart::Minimise(const std::function<bool()>& wanted) {
    if (!options_.Is(WindowOption::MinimiseOnStart) || !window_.isVisible()) return false;
    window_.showMinimized();
    Wait(kMostPatience, [&] { return !wanted() || !window_.windowHandle()->isExposed(); });
    return true;
}

bool RecordingStart::CountDown(QPoint centre, const std::function<bool()>& wanted) {
    const int seconds = options_.CountdownSeconds();
    if (seconds == 0) return false;
    CountdownView view(centre);
    for (int left = seconds; left > 0 && wanted(); --left) {
        view.setText(QString::number(left));
        view.setAccessibleName(Text("The recording begins in %1 seconds").arg(left));
        message_.ShowNote(Text("The recording begins in %1 seconds; Stop gives it up.").arg(left));
        view.show();
        Wait(kSecond, [&] { return !wanted(); });
    }
    message_.Clear();
    return true;
}

void RecordingStart::Wait(int milliseconds, const std::function<bool()>& done) {
    QTimer timer;
    timer.setSingleShot(true);
    timer.start(milliseconds);
    loop_.RunUntil([&] { return done() || !timer.isActive(); });
}

}  // namespace platform::host
