// The commands that were given last, kept where the desktop keeps a program's own settings.
#pragma once

#include <QSettings>
#include <QString>
#include <QStringList>

namespace platform::host {

/// Read when first asked for. User-interface thread; the settings must outlive it.
class RecentCommands {
  public:
    static constexpr int kMost = 30;

    explicit RecentCommands(QSettings& settings) : settings_(settings) {}

    /// Oldest first.
    const QStringList& List();
    /// Becomes the newest, and the oldest of more than kMost goes. Texts without a word, and the
    /// newest once more, are not taken.
    void Add(const QString& command);
    void Clear();

  private:
    void Store();

    QSettings& settings_;
    QStringList commands_;
    bool read_ = false;
};

}  // namespace platform::host
