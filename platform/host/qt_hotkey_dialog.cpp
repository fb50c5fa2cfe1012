#include "platform/host/qt_hotkey_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <memory>

#include "platform/host/qt_hotkeys.h"

namespace platform::host {

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
    : QDialog(parent), options_(options), pause_(this), stop_(this), warning_(this) {
    setObjectName(QStringLiteral("hotkeyDialog"));
    setWindowTitle(tr("Global hotkeys"));
    pause_.setObjectName(QStringLiteral("pauseKey"));
    pause_.setAccessibleName(tr("Key that pauses and resumes"));
    pause_.setKeySequence(options.Key(Hotkey::Pause));
    stop_.setObjectName(QStringLiteral("stopKey"));
    stop_.setAccessibleName(tr("Key that stops"));
    stop_.setKeySequence(options.Key(Hotkey::Stop));
    warning_.setObjectName(QStringLiteral("hotkeyWarning"));
    warning_.setWordWrap(true);
    for (HotkeyEdit* edit : {&pause_, &stop_})
        connect(edit, &QKeySequenceEdit::keySequenceChanged, this, [this] { Check(); });

    // The layouts and what stands in them belong to the dialog.
    auto layout = std::make_unique<QFormLayout>(this);
    auto explanation = std::make_unique<QLabel>(
        tr("These keys work while another program is in front. An empty field switches its key "
           "off."));
    explanation->setWordWrap(true);
    layout->addRow(explanation.release());
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

void HotkeyDialog::Check() {
    QString trouble;
    for (const HotkeyEdit* edit : {&pause_, &stop_}) {
        const QKeySequence keys = edit->keySequence();
        if (keys.isEmpty() || Hotkeys::CanBeGlobal(keys)) continue;
        trouble = tr("%1 cannot be a global hotkey. Take a function key, or a letter together with "
                     "Ctrl, Alt or Meta.")
                      .arg(keys.toString(QKeySequence::NativeText));
    }
    if (trouble.isEmpty() && !pause_.keySequence().isEmpty() &&
        pause_.keySequence() == stop_.keySequence())
        trouble = tr("Both are the same key.");
    warning_.setText(trouble);
    ok_->setEnabled(trouble.isEmpty());
}

void HotkeyDialog::UseUsual() {
    pause_.setKeySequence(WindowOptions::UsualKey(Hotkey::Pause));
    stop_.setKeySequence(WindowOptions::UsualKey(Hotkey::Stop));
}

void HotkeyDialog::Keep() {
    options_.SetKey(Hotkey::Pause, pause_.keySequence());
    options_.SetKey(Hotkey::Stop, stop_.keySequence());
    accept();
}

}  // namespace platform::host
