#include "platform/host/qt_second_pass.h"

#include <QCoreApplication>
#include <algorithm>

namespace platform::host {

namespace {

constexpr int kTick = 500;  // milliseconds

QString Text(const char* text) { return QCoreApplication::translate("SecondPassNote", text); }

}  // namespace

SecondPassNote::SecondPassNote(MessageLine& message) : message_(message) {
    tick_.setInterval(kTick);
    QObject::connect(&tick_, &QTimer::timeout, &tick_, [this] { Update(); });
}

void SecondPassNote::BeforeStop() {
    if (form_ == nullptr || tick_.isActive() || !form_->IsBusy()) return;
    const RunProgress progress = form_->Progress();
    if (progress.passes < 2 || progress.pass > 1) return;
    in_second_ = false;
    encoded_ms_ = read_ms_ = progress.encoded_ms;
    message_.ShowNote(
        Text("The second pass follows, over what was read so far. Stop again ends it "
             "too; the file is whole either way."));
    tick_.start();
}

void SecondPassNote::Update() {
    if (!form_->IsBusy()) {
        tick_.stop();
        if (!message_.HasError()) message_.Clear();
        return;
    }
    const std::int64_t encoded_ms = form_->Progress().encoded_ms;
    if (encoded_ms < encoded_ms_) in_second_ = true;
    encoded_ms_ = encoded_ms;
    if (!in_second_) read_ms_ = std::max(read_ms_, encoded_ms);
    if (!in_second_ || read_ms_ == 0) return;
    message_.ShowNote(Text("The second pass still runs: %1%. Stop again ends it; the file is whole "
                           "either way.")
                          .arg(std::min<std::int64_t>(encoded_ms * 100 / read_ms_, 100)));
}

}  // namespace platform::host
