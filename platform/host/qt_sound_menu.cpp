#include "platform/host/qt_sound_menu.h"

#include <QCoreApplication>
#include <utility>

namespace platform::host {

namespace {

constexpr const char* kVariable = "TESSIVO_SOUND";

struct ChoiceRow {
    const char* choice;  // as the variable takes it
    const char* name;
    const char* text;
    const char* note;
};

// clang-format off
constexpr ChoiceRow kChoices[] = {
    {"",           "defaultSound", "The &default device",
        "Recordings of the screen take the sound of the default device"},
    {"microphone", "microphone",   "The &microphone",
        "Recordings of the screen take the sound of the microphone"},
    {"desktop",    "desktopSound", "What the desktop &plays",
        "Recordings of the screen take what the desktop plays"},
    {"both",       "bothSounds",   "&Both, mixed",
        "Recordings of the screen take the microphone and what the desktop plays"},
};
// clang-format on

QString Text(const char* text) { return QCoreApplication::translate("SoundMenu", text); }

QString Chosen() { return qEnvironmentVariable(kVariable); }

}  // namespace

SoundMenu::SoundMenu(const QString& title, LevelMeter& meter, WindowOptions& options,
                     std::function<void(const QString&)> say, QWidget* parent)
    : QMenu(title, parent), meter_(meter), options_(options), say_(std::move(say)), group_(this) {
    setObjectName(QStringLiteral("soundMenu"));
    setAccessibleName(QString(title).remove(QLatin1Char('&')));
    for (const ChoiceRow& row : kChoices)
        AddChoice(row.name, Text(row.text), QLatin1String(row.choice), Text(row.note));
    if (group_.checkedAction() == nullptr)
        AddChoice("soundChosen", Chosen(), Chosen(),
                  Text("Recordings of the screen take the sound of %1").arg(Chosen()));
    addSeparator();
    level_ = addAction(Text("Show the &level"));
    level_->setObjectName(QStringLiteral("showLevel"));
    level_->setStatusTip(
        Text("Listens to the chosen device and shows how loud it is, also while it is recorded"));
    level_->setCheckable(true);
    connect(level_, &QAction::toggled, this, [this](bool on) {
        options_.Set(WindowOption::ShowLevel, on);
        ShowLevel(on);
    });
}

void SoundMenu::Begin() {
    const QSignalBlocker as_it_was(level_);
    level_->setChecked(options_.Is(WindowOption::ShowLevel));
    ShowLevel(level_->isChecked());
}

void SoundMenu::AddChoice(const char* name, const QString& text, const QString& choice,
                          const QString& note) {
    QAction* const action = addAction(text, this, [this, choice, note] { Choose(choice, note); });
    action->setObjectName(QLatin1String(name));
    action->setStatusTip(note);
    action->setCheckable(true);
    action->setActionGroup(&group_);
    action->setChecked(choice == Chosen().toLower());
}

void SoundMenu::Choose(const QString& choice, const QString& note) {
    if (choice.isEmpty())
        qunsetenv(kVariable);
    else
        qputenv(kVariable, choice.toUtf8());
    if (meter_.IsOn()) ShowLevel(true);
    say_(note);
}

void SoundMenu::ShowLevel(bool on) {
    if (on)
        meter_.Start(Chosen());
    else
        meter_.Stop();
}

}  // namespace platform::host
