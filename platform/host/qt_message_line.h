// The line that says what a person has to know of the last command: an error, or a note.
#pragma once

#include <QHBoxLayout>
#include <QLabel>
#include <QString>
#include <QWidget>

#include "platform/host/qt_controls.h"

namespace platform::host {

/// Takes no room while it has nothing to say. What it says stays until Clear; its tool tip has the
/// whole of it.
class MessageLine : public QWidget {
  public:
    explicit MessageLine(QWidget* parent);

    /// In the theme's warning colour. `more` is for the tool tip alone.
    void ShowError(const QString& text, const QString& more = {});
    /// An error that is being shown stays.
    void ShowNote(const QString& text, const QString& more = {});
    void Clear();
    bool HasError() const { return has_error_; }
    QString Text() const { return text_; }

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void Say(const QString& text, const QString& more);
    void Colour();

    QHBoxLayout layout_;
    QLabel icon_;
    ShorteningLabel label_;
    QString text_;
    bool has_error_ = false;
};

}  // namespace platform::host
