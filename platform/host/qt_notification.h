// Messages of the desktop's notification service.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <utility>

namespace platform::host {

/// Where there is no such service, nothing happens. User-interface thread.
class Notifier : public QObject {
    Q_OBJECT

  public:
    enum class Button { Play, ShowFolder };
    /// Gets the button of the last message that had some, and its file.
    using ButtonHandler = std::function<void(Button, const QString& file)>;

    void OnButton(ButtonHandler handler) { on_button_ = std::move(handler); }
    /// Returns at once. Plain texts.
    /// @param file  what the message's buttons are about; "" = it has none
    void Show(const QString& summary, const QString& body, const QString& file = {});

  private Q_SLOTS:
    void ActionInvoked(uint message, const QString& key);

  private:
    ButtonHandler on_button_;
    bool listens_ = false;
    uint message_ = 0;  // as the service numbers it
    QString file_;
};

}  // namespace platform::host
