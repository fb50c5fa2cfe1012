#include "platform/host/qt_level_meter.h"

#include <algorithm>
#include <cmath>

namespace platform::host {

namespace {

constexpr int kInterval = 50;      // milliseconds
constexpr double kSilence = -60;   // decibels, the left end of a bar
constexpr double kTooLoud = -0.5;  // what is recorded is about to be cut off
constexpr double kFall = 1;        // decibels in an interval
constexpr int kBarHeight = 10;     // pixels

double Decibels(double peak) {
    return peak > 0 ? std::clamp(20 * std::log10(peak), kSilence, 0.0) : kSilence;
}

}  // namespace

LevelMeter::LevelMeter(QWidget* parent) : QWidget(parent), layout_(this), problem_(this) {
    setObjectName(QStringLiteral("levelMeter"));
    setAccessibleName(QObject::tr("Level of the sound"));
    layout_.setContentsMargins(0, 0, 0, 0);
    layout_.setVerticalSpacing(2);
    layout_.setColumnStretch(0, 1);
    layout_.setColumnStretch(1, 2);
    problem_.setTextFormat(Qt::PlainText);
    problem_.setWordWrap(true);
    problem_.hide();
    layout_.addWidget(&problem_, 0, 0, 1, 3);
    timer_.setInterval(kInterval);
    connect(&timer_, &QTimer::timeout, this, [this] { Show(); });
    hide();
}

void LevelMeter::Start(const QString& choice) {
    if (!maker_) return;
    meter_.reset();  // a device may be for one alone
    meter_ = maker_(choice.toStdString());
    FitTo({});
    timer_.start();
    show();
}

void LevelMeter::Stop() {
    timer_.stop();
    meter_.reset();
    hide();
}

void LevelMeter::Show() {
    const SoundLevels levels = meter_->Take();
    problem_.setText(QString::fromStdString(levels.problem));
    problem_.setVisible(!levels.problem.empty());
    FitTo(levels.devices);
    for (std::size_t i = 0; i < levels.devices.size(); ++i)
        ShowLevel(*bars_[i], levels.devices[i].peak);
}

void LevelMeter::FitTo(const std::vector<SoundLevel>& devices) {
    while (bars_.size() > devices.size()) bars_.pop_back();
    while (bars_.size() < devices.size()) {
        auto bar = std::make_unique<Bar>(this);
        const int row = 1 + static_cast<int>(bars_.size());
        const QString name = QString::fromStdString(devices[bars_.size()].name);
        bar->name.SetWholeText(name);
        bar->name.SetExplanation(name);
        bar->level.setRange(static_cast<int>(kSilence), 0);
        bar->level.setTextVisible(false);
        bar->level.setMaximumHeight(kBarHeight);
        bar->level.setAccessibleName(QObject::tr("Level of %1").arg(name));
        bar->figure.setMinimumWidth(
            bar->figure.fontMetrics().horizontalAdvance(QObject::tr("too loud")));
        bar->shown = kSilence;
        layout_.addWidget(&bar->name, row, 0);
        layout_.addWidget(&bar->level, row, 1);
        layout_.addWidget(&bar->figure, row, 2);
        bars_.push_back(std::move(bar));
    }
}

void LevelMeter::ShowLevel(Bar& bar, double peak) {
    bar.shown = std::max(Decibels(peak), bar.shown - kFall);
    const int decibels = static_cast<int>(std::lround(bar.shown));
    bar.level.setValue(decibels);
    bar.figure.setText(bar.shown >= kTooLoud   ? QObject::tr("too loud")
                       : bar.shown <= kSilence ? QObject::tr("silent")
                                               : QObject::tr("%1 dB").arg(decibels));
}

}  // namespace platform::host
