#include "platform/host/qt_recorded_size.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLocale>
#include <QStorageInfo>

namespace platform::host {

namespace {

constexpr std::int64_t kScarce = 500'000'000;

QString Text(const char* text) { return QCoreApplication::translate("RecordedSize", text); }

}  // namespace

std::optional<std::int64_t> FreeBytes(const RunProgress& progress) {
    if (progress.output.empty()) return std::nullopt;
    const QStorageInfo storage(QFileInfo(QString::fromStdString(progress.output)).absolutePath());
    if (!storage.isValid()) return std::nullopt;
    return storage.bytesAvailable();
}

QString RecordedText(const RunProgress& progress, std::optional<std::int64_t> free_bytes) {
    if (progress.output.empty()) return {};
    QString size =
        QLocale().formattedDataSize(progress.total.byte_count.Raw(), 1, QLocale::DataSizeSIFormat);
    if (!free_bytes) return size;
    return Text("%1, %2 free")
        .arg(size, QLocale().formattedDataSize(*free_bytes, 1, QLocale::DataSizeSIFormat));
}

bool IsScarce(std::int64_t free_bytes) { return free_bytes < kScarce; }

}  // namespace platform::host
