#include "platform/host/qt_run_question.h"

#include <QCoreApplication>
#include <QPushButton>

namespace platform::host {

namespace {

QString Text(const char* text) { return QCoreApplication::translate("RunQuestion", text); }

}  // namespace

void RunQuestion::Ask(const Offer& offer) {
    if (box_ && box_->isVisible()) return;
    box_ = std::make_unique<QMessageBox>(QMessageBox::Question, window_.windowTitle(),
                                         Text("An encoding is still running."),
                                         QMessageBox::NoButton, &window_);
    box_->setObjectName(QStringLiteral("question"));
    box_->setInformativeText(offer.question +
                             Text(" What was encoded so far is kept as a whole file."));
    QPushButton* const yes = box_->addButton(offer.yes, QMessageBox::AcceptRole);
    yes->setObjectName(QLatin1String(offer.button_name));
    QPushButton* const keep = box_->addButton(Text("&Keep encoding"), QMessageBox::RejectRole);
    keep->setObjectName(QStringLiteral("keepRunning"));
    box_->setDefaultButton(keep);
    box_->setEscapeButton(keep);
    QObject::connect(yes, &QPushButton::clicked, &window_, offer.on_yes);
    box_->open();
}

}  // namespace platform::host
