#include "platform/host/qt_screen_menu.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include "platform/error.h"

namespace platform::host {

namespace {

constexpr const char* kVariable = "TESSIVO_SCREEN";
constexpr const char* kPointerVariable = "TESSIVO_POINTER";
const QString kPointerOff = QStringLiteral("off");
constexpr QSize kUsualRegion(1280, 720);
constexpr int kMenuGone = 150;           // ms, until all have painted what a menu covered
constexpr qsizetype kLongestEntry = 60;  // characters of a window's title

QString Text(const char* text) { return QCoreApplication::translate("ScreenMenu", text); }

QString Entry(const QString& name) {
    QString entry = name.simplified();
    if (entry.size() > kLongestEntry)
        entry = entry.left(kLongestEntry - 1) + QChar(0x2026);  // ellipsis
    return entry.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

QString Chosen() { return qEnvironmentVariable(kVariable); }

}  // namespace

QString RegionChoice(const QRect& pixels) {
    return QStringLiteral("region:%1x%2+%3+%4")
        .arg(pixels.width())
        .arg(pixels.height())
        .arg(pixels.x())
        .arg(pixels.y());
}

std::optional<QRect> ChosenRegion() {
    static const QRegularExpression form(
        QStringLiteral("^region:(\\d{1,5})x(\\d{1,5})\\+(\\d{1,5})\\+(\\d{1,5})$"));
    const QRegularExpressionMatch match = form.match(Chosen());
    if (!match.hasMatch()) return std::nullopt;
    const auto number = [&](int place) { return match.captured(place).toInt(); };
    return QRect(number(3), number(4), number(1), number(2));
}

ScreenMenu::ScreenMenu(const QString& title, std::function<void(const QString&)> say,
                       QWidget* parent)
    : QMenu(title, parent), say_(std::move(say)), windows_(Text("&Window")) {
    setObjectName(QStringLiteral("screenMenu"));
    setAccessibleName(QString(title).remove(QLatin1Char('&')));
    setToolTipsVisible(true);
    windows_.setObjectName(QStringLiteral("screenWindowMenu"));
    windows_.setAccessibleName(Text("Window"));
    connect(this, &QMenu::aboutToShow, this, [this] { Fill(); });
    // The menu and what it covered would be part of the picture that the band is drawn on.
    menu_gone_.setInterval(kMenuGone);
    menu_gone_.setSingleShot(true);
    connect(&menu_gone_, &QTimer::timeout, this, [this] { ChooseRegion(); });
    Fill();  // without the parts: they are asked for when it opens
}

void ScreenMenu::AddChoice(QMenu& menu, const char* name, const QString& text,
                           const QString& choice) {
    QAction* const action = menu.addAction(text, &menu, [this, choice] { Choose(choice); });
    action->setObjectName(QLatin1String(name));
    action->setStatusTip(choice.isEmpty() ? Text("Recordings of the screen take all of it")
                                          : Text("Recordings of the screen take this part of it"));
    action->setCheckable(true);
    action->setActionGroup(group_.get());
    if (choice != Chosen()) return;
    action->setChecked(true);
    has_chosen_ = true;
}

void ScreenMenu::Fill() {
    clear();
    windows_.clear();
    group_ = std::make_unique<QActionGroup>(this);
    has_chosen_ = false;
    ScreenParts parts;
    if (finder_) {
        try {
            parts = finder_();
        } catch (const Error&) {
            // A display that does not answer has no parts; recording it will say so.
        }
    }
    AddChoice(*this, "wholeScreen", Text("Whole &screen"), QString());
    for (const ScreenPart& monitor : parts.monitors)
        AddChoice(*this, "screenMonitor", Entry(QString::fromStdString(monitor.name)),
                  QString::fromStdString(monitor.choice));
    FillWindows(parts);
    QAction* const windows = addMenu(&windows_);
    windows->setStatusTip(Text("Recordings of the screen take one window, without what covers it"));
    const bool can_choose = !parts.chosen_by_desktop;
    windows->setEnabled(can_choose);
    if (!has_chosen_) AddChoice(*this, "screenChosen", Entry(Chosen()), Chosen());
    AddRegion(can_choose);
    AddPointer();
    if (can_choose) return;
    const QString reason = Text("On Wayland the desktop asks what is recorded");
    for (QAction* action : {windows, findChild<QAction*>(QLatin1String("chooseRegion"))}) {
        action->setToolTip(reason);
        action->setStatusTip(reason);
    }
}

void ScreenMenu::AddRegion(bool can_choose) {
    addSeparator();
    QAction* const region =
        addAction(Text("Choose a &region..."), &menu_gone_, qOverload<>(&QTimer::start));
    region->setObjectName(QStringLiteral("chooseRegion"));
    region->setEnabled(can_choose);
    region->setStatusTip(
        Text("Draw a box on the screen; recordings of the screen take what is in it"));
    QAction* const numbers = addAction(Text("Region by &numbers..."), this,
                                       [this, can_choose] { AskForNumbers(can_choose); });
    numbers->setObjectName(QStringLiteral("regionByNumbers"));
    numbers->setStatusTip(Text("Give width, height and place of the region in pixels"));
}

void ScreenMenu::AddPointer() {
    addSeparator();
    QAction* const pointer = addAction(Text("Mouse &pointer"), [](bool on) {
        if (on)
            qunsetenv(kPointerVariable);
        else
            qputenv(kPointerVariable, kPointerOff.toUtf8());
    });
    pointer->setObjectName(QStringLiteral("recordPointer"));
    pointer->setStatusTip(Text("Recordings of the screen have the mouse pointer in them"));
    pointer->setCheckable(true);
    pointer->setChecked(qEnvironmentVariable(kPointerVariable) != kPointerOff);
}

void ScreenMenu::AskForNumbers(bool can_choose) {
    const QRect screen = can_choose ? ScreenPixels() : QRect();
    QRect usual(QPoint(0, 0), kUsualRegion);
    if (can_choose) {
        usual = usual.intersected(QRect(QPoint(0, 0), screen.size()));
        usual.moveCenter(screen.center());
    }
    dialog_ = std::make_unique<RegionDialog>(ChosenRegion().value_or(usual), screen,
                                             parentWidget()->window());
    connect(dialog_.get(), &QDialog::accepted, this,
            [this] { Choose(RegionChoice(dialog_->Region())); });
    dialog_->open();
}

void ScreenMenu::FillWindows(const ScreenParts& parts) {
    for (const ScreenPart& window : parts.windows)
        AddChoice(windows_, "screenWindow", Entry(QString::fromStdString(window.name)),
                  QString::fromStdString(window.choice));
    if (parts.windows.empty()) windows_.addAction(Text("No open windows"))->setEnabled(false);
}

void ScreenMenu::ChooseRegion() {
    chooser_.Start([this](std::optional<QRect> pixels) {
        if (pixels) Choose(RegionChoice(*pixels));
    });
}

void ScreenMenu::Choose(const QString& choice) {
    if (choice.isEmpty())
        qunsetenv(kVariable);
    else
        qputenv(kVariable, choice.toUtf8());
    say_(choice.isEmpty() ? Text("Recordings of the screen take all of it")
                          : Text("Recordings of the screen take %1").arg(choice));
}

}  // namespace platform::host
