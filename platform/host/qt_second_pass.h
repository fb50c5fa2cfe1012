// What is said after Stop in the first of two passes.
#pragma once

#include <QTimer>
#include <cstdint>

#include "platform/form_events.h"
#include "platform/host/qt_message_line.h"

namespace platform::host {

/// The second pass runs over what the first has read, and Stop does not end it: the message line
/// says so, and how far it is, until the run has ended. User-interface thread; everything handed
/// over must outlive it.
class SecondPassNote {
  public:
    explicit SecondPassNote(MessageLine& message);

    void SetForm(FormEvents& form) { form_ = &form; }
    /// The form is about to be told to stop.
    void BeforeStop();

  private:
    void Update();

    MessageLine& message_;
    FormEvents* form_ = nullptr;
    QTimer tick_;
    bool in_second_ = false;
    std::int64_t encoded_ms_ = 0;
    std::int64_t read_ms_ = 0;  // by the first pass
};

}  // namespace platform::host
