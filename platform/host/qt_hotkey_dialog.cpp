#include "platform/host/qt_hotkey_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <memory>

namespace platform::host {

namespace {

/// A sequence may have four keys; a hotkey is one.
void KeepOneKey(QKeySequenceEdit& edit) {
    QObject::connect(&edit, &QKeySequenceEdit::keySequenceChanged, &edit,
                     [&edit](const QKeySequence& keys) {
                         if (keys.count() > 1) edit.setKeySequence(QKeySequence(keys[0]));
                     });
    edit.setClearButtonEnabled(true);
}

}  // namespace

HotkeyDialog::HotkeyDialog(WindowOptions& options, QWidget* parent)
    : QDialog(parent), options_(options), pause_(this), stop_(this) {
    setObjectName(QStringLiteral("hotkeyDialog"));
    setWindowTitle(tr("Global hotkeys"));
    pause_.setObjectName(QStringLiteral("pauseKey"));
    pause_.setAccessibleName(tr("Key that pauses and resumes"));
    pause_.setKeySequence(options.Key(Hotkey::Pause));
    stop_.setObjectName(QStringLiteral("stopKey"));
    stop_.setAccessibleName(tr("Key that stops"));
    stop_.setKeySequence(options.Key(Hotkey::Stop));
    for (QKeySequenceEdit* edit : {&pause_, &stop_}) KeepOneKey(*edit);

    // The layouts and what stands in them belong to the dialog.
    auto layout = std::make_unique<QFormLayout>(this);
    auto explanation = std::make_unique<QLabel>(
        tr("These keys work while another program is in front. An empty field switches its key "
           "off."));
    explanation->setWordWrap(true);
    layout->addRow(explanation.release());
    layout->addRow(tr("&Pause and resume:"), &pause_);
    layout->addRow(tr("&Stop:"), &stop_);
    auto buttons = std::make_unique<QDialogButtonBox>(
        QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::RestoreDefaults);
    connect(buttons.get(), &QDialogButtonBox::accepted, this, [this] { Keep(); });
    connect(buttons.get(), &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this,
            [this] { UseUsual(); });
    layout->addRow(buttons.release());
    static_cast<void>(layout.release());
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
