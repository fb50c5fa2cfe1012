#include "platform/host/qt_hotkey_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <memory>

#include "platform/host/qt_hotkeys.h"

namespace platform::host {

namespace {

constexpr int kWarningLines = 2;

}  // namespace

HotkeyEdit::HotkeyEdit(QWidget* parent) : QKeySequenceEdit(parent) {
    // A sequence may have four keys; a hotkey is one.
    connect(this, &QKeySequenceEdit::keySequenceChanged, this, [this](const QKeySequence& keys) {
        if (keys.count() > 1) setKeySequence(QKeySequence(keys[0]));
    });
    setClearButtonEnabled(true);
}

void HotkeyEdit::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier)
        event->ignore();
    else
        QKeySequenceEdit::keyPressEvent(event);
}

HotkeyDialog::HotkeyDialog(WindowOptions& options, QWidget* parent)
    : QDialog(parent), options_(options), start_(this), pause_(this), stop_(this), warning_(this) {
    setObjectName(QStringLiteral("hotkeyDialog"));
    setWindowTitle(tr("Global hotkeys"));
    start_.setObjectName(QStringLiteral("startKey"));
    start_.setAccessibleName(tr("Key that runs the command"));
    pause_.setObjectName(QStringLiteral("pauseKey"));
    pause_.setAccessibleName(tr("Key that pauses and resumes"));
    stop_.setObjectName(QStringLiteral("stopKey"));
    stop_.setAccessibleName(tr("Key that stops"));
    warning_.setObjectName(QStringLiteral("hotkeyWarning"));
    warning_.setWordWrap(true);
    warning_.setAlignment(Qt::AlignLeft | Qt::AlignTop);
    // The dialog does not grow when a warning comes.
    warning_.setMinimumHeight(kWarningLines * warning_.fontMetrics().lineSpacing());
    for (const Row& row : Rows()) {
        row.edit.setKeySequence(options.Key(row.hotkey));
        // Assistive programs are led to the field inside.
        row.edit.findChild<QLineEdit*>()->setAccessibleName(row.edit.accessibleName());
        connect(&row.edit, &QKeySequenceEdit::keySequenceChanged, this, [this] { Check(); });
    }

    // The layouts and what stands in them belong to the dialog.
    auto layout = std::make_unique<QFormLayout>(this);
    auto explanation = std::make_unique<QLabel>(
        tr("These keys work while another program is in front. An empty field switches its key "
           "off. One key may both run the command and stop."));
    explanation->setWordWrap(true);
    layout->addRow(explanation.release());
    layout->addRow(tr("&Run the command:"), &start_);
    layout->addRow(tr("&Pause and resume:"), &pause_);
    layout->addRow(tr("&Stop:"), &stop_);
    layout->addRow(&warning_);
    auto buttons = std::make_unique<QDialogButtonBox>(
        QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::RestoreDefaults);
    connect(buttons.get(), &QDialogButtonBox::accepted, this, [this] { Keep(); });
    connect(buttons.get(), &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            [this] { UseUsual(); });
    ok_ = buttons->button(QDialogButtonBox::Ok);
    layout->addRow(buttons.release());
    static_cast<void>(layout.release());
    Check();
}

std::array<HotkeyDialog::Row, 3> HotkeyDialog::Rows() {
    return {Row{Hotkey::Start, start_}, Row{Hotkey::Pause, pause_}, Row{Hotkey::Stop, stop_}};
}

QString HotkeyDialog::Trouble() {
    for (const Row& row : Rows()) {
        const QKeySequence keys = row.edit.keySequence();
        if (keys.isEmpty()) continue;
        const QString name = keys.toString(QKeySequence::NativeText);
        if (!Hotkeys::CanBeGlobal(keys))
            return tr("%1 cannot be a global hotkey. Take a function key, or a letter together "
                      "with Ctrl, Alt or Meta.")
                .arg(name);
        if (Hotkeys::Try(keys) == Hotkeys::Answer::Held)
            return tr("Another program holds %1.").arg(name);
    }
    const QKeySequence pause = pause_.keySequence();
    if (!pause.isEmpty() && (pause == stop_.keySequence() || pause == start_.keySequence()))
        return tr("The key that pauses is needed twice.");
    return {};
}

void HotkeyDialog::Check() {
    const QString trouble = Trouble();
    warning_.setText(trouble);
    ok_->setEnabled(trouble.isEmpty());
}

void HotkeyDialog::UseUsual() {
    for (const Row& row : Rows()) row.edit.setKeySequence(WindowOptions::UsualKey(row.hotkey));
}

void HotkeyDialog::Keep() {
    for (const Row& row : Rows()) options_.SetKey(row.hotkey, row.edit.keySequence());
    accept();
}

}  // namespace platform::host
