// The form's window on a desktop.
#pragma once

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/form_events.h"
#include "platform/host/qt_broadcast_bar.h"
#include "platform/host/qt_command_edit.h"
#include "platform/host/qt_command_queue.h"
#include "platform/host/qt_command_runner.h"
#include "platform/host/qt_controls.h"
#include "platform/host/qt_credentials_dialog.h"
#include "platform/host/qt_desktop.h"
#include "platform/host/qt_encoding_menu.h"
#include "platform/host/qt_file_opener.h"
#include "platform/host/qt_level_meter.h"
#include "platform/host/qt_loop.h"
#include "platform/host/qt_menu_bar.h"
#include "platform/host/qt_menu_commands.h"
#include "platform/host/qt_message_line.h"
#include "platform/host/qt_recent_commands.h"
#include "platform/host/qt_recording_start.h"
#include "platform/host/qt_result_bar.h"
#include "platform/host/qt_run_question.h"
#include "platform/host/qt_run_watch.h"
#include "platform/host/qt_screen_menu.h"
#include "platform/host/qt_second_pass.h"
#include "platform/host/qt_sound_menu.h"
#include "platform/host/qt_window_options.h"
#include "platform/host/queued_call.h"
#include "platform/host/time_left.h"
#include "platform/screen_parts.h"
#include "platform/widgets.h"

namespace platform::host {

/// Closing it while the form is busy asks first, stops the encoder and closes when its file is
/// finished. The widgets bear the form's names (txtCmd, cmdGo ...) as object names; beside the
/// form's there are "cmdPause", "timeLeft", "recordedSize", "messageLine", "resultBar" and
/// "broadcastBar". Size,
/// options and recent commands are kept in the user's settings of "tessivo". A file that is dropped
/// becomes the command's input.
class QtWindow : public QWidget, public FormWindow {
  public:
    /// @param arguments  the process's arguments after the program's name, joined by blanks
    explicit QtWindow(std::string arguments);
    ~QtWindow() override;

    /// Binds the widgets to the form, which must live as long as the window is open.
    void SetForm(FormEvents& form);
    /// What the menu repairs files with.
    void SetRepair(FileRepair repair) { menu_commands_.SetRepair(std::move(repair)); }
    /// What the menu of the screen offers.
    void SetScreenParts(ScreenPartsFinder finder) { screen_menu_.SetFinder(std::move(finder)); }
    /// What the meter of the sound's level listens with.
    void SetSoundMeter(SoundMeterMaker maker) {
        level_meter_.SetMaker(std::move(maker));
        sound_menu_.Begin();
    }
    /// What plays files and shows folders instead of the desktop.
    void SetOpener(std::function<bool(const QUrl&)> open) { opener_.Use(std::move(open)); }
    /// Closes without a question, after the encoder has finished its file.
    void StopAndClose();
    /// The same for a signal: nobody is there to answer a box, so none stays open.
    void EndUnattended();

    TextBox& txtCmd() override { return command_box_; }
    TextBox& txtInfo() override { return pane_box_; }
    Button& cmdGo() override { return go_button_; }
    Button& cmdStop() override { return stop_button_; }
    ProgressBar& pb1() override { return bar_control_; }
    Label& lblStatus() override { return status_label_; }
    Label& lblFile() override { return file_label_; }
    Label& lblETm() override { return length_label_; }
    Label& lblprgs() override { return percent_label_; }
    Label& Label1() override { return elapsed_label_; }
    Label& Label2() override { return expected_rate_label_; }
    Label& Label3() override { return current_rate_label_; }
    Timer& Timer1() override { return timer_; }

    void SetCaption(const std::string& caption) override;
    void SetMousePointer(MousePointer pointer) override;
    void Beep() override;
    /// While the program is being ended by a signal the box is not shown.
    void MessageBox(const std::string& text, const std::string& title, MessageIcon icon) override;
    std::string Arguments() const override { return arguments_; }
    EventLoop& Loop() override { return loop_; }
    bool BeforeRecording(bool of_screen, const std::function<bool()>& wanted) override {
        return start_.Await(of_screen, wanted);
    }
    CredentialsAnswer AskCredentials(const CredentialsQuestion& question) override {
        return CredentialsDialog(question, this).Ask(loop_);
    }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    /// Shows the explanation of what the pointer is on.
    bool event(QEvent* event) override;

  private:
    RunCommands Commands();
    void ShowPhase();
    void NameAndExplain();
    void LayOut();
    void ClearFigures();
    void Stop();
    void Tick();
    void ShowTimeLeft(const QString& text);
    void ShowRecordedSize(const RunProgress& progress);
    void AskBeforeClosing();
    void CloseWhenIdle();

    std::string arguments_;
    FormEvents* form_ = nullptr;
    QtLoop loop_;
    bool closing_ = false;     // stopped, waits for the encoder
    bool unattended_ = false;  // ended by a signal
    bool unloaded_ = false;
    bool painted_ = false;
    QTimer idle_check_;
    RunQuestion question_{*this};

    QSettings settings_;
    RecentCommands recent_;
    WindowOptions options_;
    RunWatch watch_;

    QLabel command_caption_;
    CommandEdit command_;
    QPushButton go_;
    QPushButton stop_;
    QPushButton pause_;
    MessageLine message_;
    FileOpener opener_{message_};
    ResultBar result_;
    BroadcastBar broadcast_;
    CommandQueue queue_;
    LevelMeter level_meter_;
    OutputView pane_;
    QProgressBar bar_;
    QLabel percent_;
    QLabel time_left_;
    TimeLeft left_;
    QLabel recorded_;
    ShorteningLabel status_;
    ShorteningLabel file_;
    QLabel length_;
    QLabel elapsed_;
    QLabel expected_rate_;
    QLabel current_rate_;
    ShorteningLabel explanation_;
    CommandRunner runner_;
    SecondPassNote second_pass_;
    RecordingStart start_;
    MenuCommands menu_commands_;
    Desktop desktop_;
    QueuedCall painted_call_{[this] { desktop_.Begin(); }};  // after the first time
    WindowMenuBar menu_bar_;
    EncodingMenu encoding_menu_;
    ScreenMenu screen_menu_;
    SoundMenu sound_menu_;

    QtCommandBox command_box_;
    QtPane pane_box_;
    QtButton go_button_;
    QtButton stop_button_;
    QtButton pause_button_;
    QtBar bar_control_;
    QtLabel percent_label_;
    QtLabel status_label_;
    QtLabel file_label_;
    QtLabel length_label_;
    QtLabel elapsed_label_;
    QtLabel expected_rate_label_;
    QtLabel current_rate_label_;
    QtTimer timer_;

    QVBoxLayout rows_;
    QHBoxLayout command_row_;
    QHBoxLayout progress_row_;
    QGridLayout facts_;
};

}  // namespace platform::host
