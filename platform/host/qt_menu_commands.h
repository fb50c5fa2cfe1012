// What the menus do beside the command box: looks, dialogs, and the pane as a file.
#pragma once

#include <QFileDialog>
#include <QMessageBox>
#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/form_events.h"
#include "platform/host/qt_command_edit.h"
#include "platform/host/qt_controls.h"

namespace platform::host {

/// Makes a file that was cut off whole; returns the line that says what was done. Throws Error.
/// Called on a thread of its own.
using FileRepair = std::function<std::string(const std::string& path)>;

/// Dialogs are opened without a loop of their own and named: "inputFile", "saveFile", "message",
/// "about". User-interface thread; everything handed over must outlive it.
class MenuCommands {
  public:
    MenuCommands(QWidget& window, CommandEdit& command, OutputView& pane);
    ~MenuCommands();
    MenuCommands(const MenuCommands&) = delete;
    MenuCommands& operator=(const MenuCommands&) = delete;

    void SetForm(FormEvents& form) { form_ = &form; }
    bool IsBusy() const { return form_ != nullptr && form_->IsBusy(); }

    void ListDevices() { RunListing({"-devices"}); }
    void ListAudioCodecs() { RunListing({"-a_codecs"}); }
    void ListVideoCodecs() { RunListing({"-v_codecs"}); }
    void ListAudioFormats() { RunListing({"-a_formats"}); }
    void ShowHelp() { RunListing({"-help"}); }
    void ShowFileInformation();
    void NewSession();
    void SavePane();
    void ClearPane();
    void GoToCommand();
    void ShowAbout();
    void Quit();

  private:
    void RunListing(const std::vector<std::string>& words);
    QFileDialog& OpenDialog(const char* name, const QString& title);
    void WritePane(const QString& path);
    void ShowMessage(QMessageBox::Icon icon, const char* name, const QString& text,
                     const QString& more);

    QWidget& window_;
    CommandEdit& command_;
    OutputView& pane_;
    FormEvents* form_ = nullptr;
    std::unique_ptr<QFileDialog> dialog_;
    std::unique_ptr<QMessageBox> message_;
};

}  // namespace platform::host
