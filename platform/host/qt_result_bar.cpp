#include "platform/host/qt_result_bar.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLocale>

#include "platform/host/time_left.h"

namespace platform::host {

namespace {

QString Text(const char* text) { return QCoreApplication::translate("ResultBar", text); }

QString NameOf(const std::string& path) {
    return QFileInfo(QString::fromStdString(path)).fileName();
}

// The last notice of a folder is what came of it.
ResultText TextOfFolder(const CommandReport& report) {
    const CommandEnd end = report.last.end;
    if (end == CommandEnd::Refused)
        return {
            Text("The folder was not encoded"),
            report.last.error ? QString::fromStdString(report.last.error->description) : QString()};
    return {end == CommandEnd::Failed ? Text("The folder is done, but not all of it")
                                      : Text("The folder is done"),
            report.notices.empty() ? QString() : QString::fromStdString(report.notices.back())};
}

ResultText TextOfFailure(const FileReport& last, bool capture) {
    const QString name = NameOf(last.output.empty() ? last.input : last.output);
    return {(capture ? Text("The recording %1 ended with an error") : Text("Encoding %1 failed"))
                .arg(name),
            last.error ? QString::fromStdString(last.error->description) : QString()};
}

}  // namespace

ResultText TextOf(const CommandReport& report, bool capture) {
    const FileReport& last = report.last;
    if (report.is_folder) return TextOfFolder(report);
    if (IsFailure(last.end)) return TextOfFailure(last, capture);
    if (last.output.empty()) {
        QString details;
        if (last.network.broadcast)
            details = Text("Players served: %1").arg(last.network.broadcast->clients_served);
        return {Text("The stream has ended"), details};
    }
    ResultText text{
        (capture ? Text("%1 is recorded") : Text("%1 is encoded")).arg(NameOf(last.output)), {}};
    if (last.file)
        text.details =
            QString::fromStdString(ClockText(last.file->file_duration.Raw() / 1000)) +
            QStringLiteral(", ") +
            QLocale().formattedDataSize(last.file->file_size.Raw(), 1, QLocale::DataSizeSIFormat);
    return text;
}

QString PlayableFile(const CommandReport& report, bool capture) {
    // A recording that ends in an error is whole up to there.
    if (report.is_folder || !report.last.file || (IsFailure(report.last.end) && !capture))
        return {};
    return QString::fromStdString(report.last.output);
}

ResultBar::ResultBar(FileOpener& opener, QWidget* parent)
    : QWidget(parent),
      opener_(opener),
      layout_(this),
      label_(this),
      play_(Text("Pla&y"), this),
      folder_(Text("&Open folder"), this) {
    setObjectName(QStringLiteral("resultBar"));
    setAccessibleName(Text("Result"));
    label_.setObjectName(QStringLiteral("result"));
    label_.setTextFormat(Qt::PlainText);
    label_.setAccessibleName(accessibleName());
    play_.setObjectName(QStringLiteral("playResult"));
    play_.setAccessibleName(Text("Play"));
    play_.setStatusTip(Text("Opens the file in the desktop's player"));
    folder_.setObjectName(QStringLiteral("showResultFolder"));
    folder_.setAccessibleName(Text("Open folder"));
    folder_.setStatusTip(Text("Opens the folder that the file is in"));
    for (QPushButton* button : {&play_, &folder_}) {
        button->setAutoDefault(true);
        button->setAccessibleDescription(button->statusTip());
    }
    layout_.setContentsMargins(0, 0, 0, 0);
    layout_.addWidget(&label_, 1);
    layout_.addWidget(&play_);
    layout_.addWidget(&folder_);
    connect(&play_, &QPushButton::clicked, this, [this] { opener_.Play(file_); });
    connect(&folder_, &QPushButton::clicked, this, [this] { opener_.ShowFolder(file_); });
    hide();
}

void ResultBar::Show(const CommandReport& report, bool capture) {
    file_ = PlayableFile(report, capture);
    if (file_.isEmpty()) return hide();
    const ResultText text = TextOf(report, capture);
    const QString line = IsFailure(report.last.end)
                             ? text.headline
                             : text.headline + QStringLiteral(": ") + text.details;
    label_.SetExplanation(file_);
    label_.SetWholeText(line);
    label_.setAccessibleName(line);
    show();
}

}  // namespace platform::host
