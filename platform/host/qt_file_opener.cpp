#include "platform/host/qt_file_opener.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileInfo>

namespace platform::host {

namespace {

QString Text(const char* text) { return QCoreApplication::translate("FileOpener", text); }

}  // namespace

FileOpener::FileOpener(MessageLine& message)
    : message_(message), open_([](const QUrl& url) { return QDesktopServices::openUrl(url); }) {}

void FileOpener::Play(const QString& file) { Open(file); }

void FileOpener::ShowFolder(const QString& file) { Open(QFileInfo(file).absolutePath()); }

void FileOpener::Open(const QString& path) {
    if (!QFileInfo::exists(path)) return message_.ShowError(Text("%1 is gone.").arg(path));
    if (open_(QUrl::fromLocalFile(path))) return;
    message_.ShowError(Text("The desktop has no program that opens %1.").arg(path));
}

}  // namespace platform::host
