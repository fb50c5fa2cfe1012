#include "platform/host/qt_credentials_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <memory>

namespace platform::host {

CredentialsDialog::CredentialsDialog(const CredentialsQuestion& question, QWidget* parent)
    : QDialog(parent), question_(question), explanation_(this), user_(this), password_(this) {
    setObjectName(QStringLiteral("credentialsDialog"));
    setWindowTitle(tr("Push"));
    const QString server = QString::fromStdString(question.server);
    explanation_.setTextFormat(Qt::PlainText);
    explanation_.setWordWrap(true);
    explanation_.setText(
        question.refused ? tr("The server %1 refuses the user name or the password.").arg(server)
                         : tr("The server %1 wants to know who pushes.").arg(server));
    setAccessibleDescription(explanation_.text());
    user_.setObjectName(QStringLiteral("pushUser"));
    user_.setAccessibleName(tr("User name"));
    password_.setObjectName(QStringLiteral("pushPassword"));
    password_.setAccessibleName(tr("Password"));
    password_.setEchoMode(QLineEdit::Password);

    // The layouts and what stands in them belong to the dialog.
    auto layout = std::make_unique<QFormLayout>(this);
    layout->addRow(&explanation_);
    layout->addRow(tr("&User name:"), &user_);
    layout->addRow(tr("&Password:"), &password_);
    auto buttons =
        std::make_unique<QDialogButtonBox>(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QPushButton* const ok = buttons->button(QDialogButtonBox::Ok);
    ok->setText(tr("Pu&sh"));
    ok->setEnabled(false);
    connect(&user_, &QLineEdit::textChanged, this,
            [ok](const QString& text) { ok->setEnabled(!text.trimmed().isEmpty()); });
    connect(buttons.get(), &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons.get(), &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addRow(buttons.release());
    static_cast<void>(layout.release());
}

CredentialsAnswer CredentialsDialog::Ask(EventLoop& loop) {
    open();
    user_.setFocus();
    loop.RunUntil([this] { return !isVisible() || !question_.wanted(); });
    const bool answered = result() == QDialog::Accepted && question_.wanted();
    hide();
    if (!answered) return {};
    return Credentials{user_.text().trimmed().toStdString(), password_.text().toStdString()};
}

}  // namespace platform::host
