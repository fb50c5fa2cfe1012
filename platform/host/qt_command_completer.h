// Offers the words that can follow in the command box.
#pragma once

#include <QCompleter>
#include <QLineEdit>
#include <QStandardItemModel>
#include <functional>
#include <vector>

#include "platform/form_events.h"

namespace platform::host {

/// A list of at most ten words opens below the box while one is typed that others begin with: after
/// an option its values, all of them as soon as the blank stands there, else options. Up, Down and
/// Enter or Tab choose from it; Enter with nothing chosen runs the command as without the list.
/// User-interface thread; the box must outlive it.
class CommandCompleter : public QCompleter {
  public:
    explicit CommandCompleter(QLineEdit& box);

    void SetForm(FormEvents& form) { form_ = &form; }
    /// Whether a word of the list is chosen, so that Enter takes it.
    bool HasChosen() const;

  private:
    void Offer();
    void Take(const QString& word);

    QLineEdit& box_;
    FormEvents* form_ = nullptr;
    QStandardItemModel words_;
};

}  // namespace platform::host
