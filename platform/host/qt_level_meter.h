// The row that shows how loud it is at the devices that would be recorded.
#pragma once

#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <memory>
#include <utility>
#include <vector>

#include "platform/host/qt_controls.h"
#include "platform/sound_meter.h"

namespace platform::host {

/// A bar a device, in decibels below full scale. Takes no room while it is off. Named "levelMeter".
class LevelMeter : public QWidget {
  public:
    explicit LevelMeter(QWidget* parent);

    void SetMaker(SoundMeterMaker maker) { maker_ = std::move(maker); }
    /// Listens to the devices of a choice; whoever listened before is let go.
    void Start(const QString& choice);
    void Stop();
    bool IsOn() const { return timer_.isActive(); }

  private:
    struct Bar {
        explicit Bar(QWidget* parent) : name(parent), level(parent), figure(parent) {}
        ShorteningLabel name;
        QProgressBar level;
        QLabel figure;
        double shown = 0;  // decibels; falls slowly
    };

    void Show();
    void FitTo(const std::vector<SoundLevel>& devices);
    void ShowLevel(Bar& bar, double peak);

    SoundMeterMaker maker_;
    std::unique_ptr<SoundMeter> meter_;
    QTimer timer_;
    QGridLayout layout_;
    QLabel problem_;
    std::vector<std::unique_ptr<Bar>> bars_;
};

}  // namespace platform::host
