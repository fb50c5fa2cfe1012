// What the menus do beside the command box: looks, dialogs, and the pane as a file.
#pragma once

#include <QFileDialog>
#include <QMessageBox>
#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/event_loop.h"
#include "platform/form_events.h"
#include "platform/host/qt_command_edit.h"
#include "platform/host/qt_controls.h"
#include "platform/host/qt_message_line.h"

namespace platform::host {

/// Makes a file that was cut off whole and returns the lines that say what was done. What it throws
/// is said in their place. Called on a thread of its own.
using FileRepair = std::function<std::string(const std::string& path)>;

/// Dialogs are opened without a loop of their own and named: "chooseInput", "chooseOutput",
/// "loadProfile", "loadSession", "saveSession", "inputFile", "repairFile", "saveFile", "message",
/// "about". User-interface thread; everything handed over must outlive it.
class MenuCommands {
  public:
    MenuCommands(QWidget& window, EventLoop& loop, CommandEdit& command, OutputView& pane,
                 MessageLine& message);
    /// Waits for a repair that still runs.
    ~MenuCommands();
    MenuCommands(const MenuCommands&) = delete;
    MenuCommands& operator=(const MenuCommands&) = delete;

    void SetForm(FormEvents& form) { form_ = &form; }
    /// Without one there is nothing to repair files with.
    void SetRepair(FileRepair repair) { repair_ = std::move(repair); }
    bool CanRepair() const { return static_cast<bool>(repair_) && !repairing_; }
    bool IsBusy() const { return form_ != nullptr && form_->IsBusy(); }

    void ListDevices() { RunListing({"-devices"}); }
    void ListAudioCodecs() { RunListing({"-a_codecs"}); }
    void ListVideoCodecs() { RunListing({"-v_codecs"}); }
    void ListAudioFormats() { RunListing({"-a_formats"}); }
    void ShowHelp() { RunListing({"-help"}); }
    void ChooseInput();
    void ChooseOutput();
    void LoadProfile();
    void LoadSession();
    void SaveSession();
    /// What the language has after `option`.
    FollowingWords WordsAfter(const char* option) const;
    void ShowFileInformation();
    void RepairFile();
    void NewSession();
    void SavePane();
    void ClearPane();
    void GoToCommand();
    void ShowAbout();
    void Quit();

  private:
    void RunListing(const std::vector<std::string>& words);
    QFileDialog& OpenDialog(const char* name, const QString& title);
    /// A dialog for a file that becomes the option's value.
    void ChooseFile(const char* name, const QString& title, const QString& kind,
                    const QString& option);
    void Repair(const QString& path);
    void WritePane(const QString& path);
    void ShowMessage(QMessageBox::Icon icon, const char* name, const QString& text,
                     const QString& more);

    QWidget& window_;
    EventLoop& loop_;
    CommandEdit& command_;
    OutputView& pane_;
    MessageLine& message_line_;
    FormEvents* form_ = nullptr;
    std::unique_ptr<QFileDialog> dialog_;
    std::unique_ptr<QMessageBox> message_;
    FileRepair repair_;
    bool repairing_ = false;
    std::thread repair_thread_;
};

}  // namespace platform::host
