// What Go and Enter do around the form's own steps.
#pragma once

#include <QString>
#include <QWidget>
#include <functional>
#include <string>

#include "platform/form_events.h"
#include "platform/host/qt_command_edit.h"
#include "platform/host/qt_command_queue.h"
#include "platform/host/qt_message_line.h"
#include "platform/host/qt_run_question.h"
#include "platform/host/qt_run_watch.h"
#include "platform/host/queued_call.h"

namespace platform::host {

/// Asks before a command takes a run's place, remembers it, clears what the window shows of the run
/// before, and says in the message line what came of it. User-interface thread; everything handed
/// over must outlive it.
class CommandRunner {
  public:
    /// @param clear_figures  takes the figures of the run before out of the window
    CommandRunner(QWidget& window, CommandEdit& command, CommandQueue& queue, MessageLine& message,
                  RunWatch& watch, std::function<void()> clear_figures);

    /// @param arguments  what the form runs from an empty box
    void SetForm(FormEvents& form, const std::string& arguments);
    /// @param go  tells the form to run the box's command
    void Run(std::function<void()> go);
    /// The queue does not go on by itself after this run.
    void HaltQueue() { halted_ = true; }

  private:
    bool WouldReplaceTheRun() const;
    void Start(const std::function<void()>& go);
    void ShowFailure(const CommandReport& report);
    void ShowNotes();
    void RunNext();

    CommandEdit& command_;
    CommandQueue& queue_;
    MessageLine& message_;
    std::function<void()> clear_figures_;
    RunQuestion question_;
    QueuedCall next_call_{[this] { RunNext(); }};
    std::function<void()> go_;
    bool halted_ = false;
    FormEvents* form_ = nullptr;
    QString arguments_;
    QString given_;  // the command that was run last
};

}  // namespace platform::host
