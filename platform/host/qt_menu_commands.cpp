#include "platform/host/qt_menu_commands.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QCoreApplication>
#include <QDir>
#include <QLineEdit>
#include <QSaveFile>
#include <exception>
#include <utility>

#include "platform/host/locale_text.h"
#include "platform/text.h"

namespace platform::host {

namespace {

QString Text(const char* text) { return QCoreApplication::translate("MenuCommands", text); }

/// The list of names that match what is typed opens when the folder has been read, also when the
/// dialog is gone by then; it would stay and take the next key.
void ForgetTypedName(const QFileDialog& dialog) {
    for (QLineEdit* edit : dialog.findChildren<QLineEdit*>()) {
        if (edit->completer() == nullptr) continue;
        edit->completer()->popup()->hide();
        edit->setCompleter(nullptr);
    }
}

}  // namespace

MenuCommands::MenuCommands(QWidget& window, EventLoop& loop, CommandEdit& command, OutputView& pane,
                           MessageLine& message)
    : window_(window), loop_(loop), command_(command), pane_(pane), message_line_(message) {}

MenuCommands::~MenuCommands() {
    if (repair_thread_.joinable()) repair_thread_.join();
}

void MenuCommands::RunListing(const std::vector<std::string>& words) {
    message_line_.Clear();
    if (form_ != nullptr) form_->RunListing(words);
}

QFileDialog& MenuCommands::OpenDialog(const char* name, const QString& title) {
    const QString folder = dialog_ ? dialog_->directory().path() : QString();
    dialog_ = std::make_unique<QFileDialog>(&window_, title, folder);
    dialog_->setObjectName(QLatin1String(name));
    QObject::connect(dialog_.get(), &QDialog::finished, dialog_.get(),
                     [dialog = dialog_.get()] { ForgetTypedName(*dialog); });
    return *dialog_;
}

void MenuCommands::ChooseInput() {
    QFileDialog& dialog = OpenDialog("chooseInput", Text("What is encoded"));
    dialog.setFileMode(QFileDialog::ExistingFile);
    QObject::connect(&dialog, &QFileDialog::fileSelected, &dialog,
                     [this](const QString& path) { command_.PutFile("-input", path); });
    dialog.open();
}

void MenuCommands::ChooseOutput() {
    QFileDialog& dialog = OpenDialog("chooseOutput", Text("Where it is written to"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilters({Text("Windows Media files (*.wmv *.wma)"), Text("All files (*)")});
    QObject::connect(&dialog, &QFileDialog::fileSelected, &dialog,
                     [this](const QString& path) { command_.PutFile("-output", path); });
    dialog.open();
}

void MenuCommands::ChooseFile(const char* name, const QString& title, const QString& kind,
                              const QString& option) {
    QFileDialog& dialog = OpenDialog(name, title);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setNameFilters({kind, Text("All files (*)")});
    QObject::connect(&dialog, &QFileDialog::fileSelected, &dialog,
                     [this, option](const QString& path) { command_.PutFile(option, path); });
    dialog.open();
}

void MenuCommands::LoadProfile() {
    ChooseFile("loadProfile", Text("Load a profile"), Text("Profiles (*.prx)"), "-loadprofile");
}

void MenuCommands::LoadSession() {
    ChooseFile("loadSession", Text("Load a session"), Text("Sessions (*.wme)"), "-wme");
}

void MenuCommands::SaveSession() {
    QFileDialog& dialog = OpenDialog("saveSession", Text("Save the session"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilters({Text("Sessions (*.wme)"), Text("All files (*)")});
    dialog.setDefaultSuffix(QStringLiteral("wme"));
    QObject::connect(&dialog, &QFileDialog::fileSelected, &dialog, [this](const QString& path) {
        std::vector<std::string> words = {"--save-session", path.toStdString()};
        for (std::string& word : Split(command_.text().toStdString(), ' '))
            words.push_back(std::move(word));
        RunListing(words);
    });
    dialog.open();
}

FollowingWords MenuCommands::WordsAfter(const char* option) const {
    return form_ == nullptr ? FollowingWords() : form_->WordsAfter(option);
}

void MenuCommands::ShowFileInformation() {
    QFileDialog& dialog = OpenDialog("inputFile", Text("File information"));
    dialog.setFileMode(QFileDialog::ExistingFile);
    QObject::connect(&dialog, &QFileDialog::fileSelected, &dialog, [this](const QString& path) {
        RunListing({"-input", path.toStdString()});
    });
    dialog.open();
}

void MenuCommands::RepairFile() {
    if (!CanRepair()) return;
    QFileDialog& dialog = OpenDialog("repairFile", Text("Repair a file"));
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setNameFilters(
        {Text("Windows Media files (*.wmv *.wma *.asf *.part)"), Text("All files (*)")});
    QObject::connect(&dialog, &QFileDialog::fileSelected, &dialog,
                     [this](const QString& path) { Repair(path); });
    dialog.open();
}

void MenuCommands::Repair(const QString& path) {
    if (repair_thread_.joinable()) repair_thread_.join();
    repairing_ = true;
    // A file of hours is read whole; the window stays usable meanwhile.
    repair_thread_ = std::thread([this, repair = repair_, name = path.toStdString()] {
        std::string text;
        try {
            text = repair(name);
        } catch (const std::exception& error) {
            text = std::string(error.what()) + "\n";
        } catch (...) {
            text = name + " cannot be repaired.\n";
        }
        loop_.Post([this, lines = QString::fromStdString(text)] {
            repairing_ = false;
            pane_.Append(lines.endsWith(QLatin1Char('\n')) ? lines : lines + QLatin1Char('\n'));
            pane_.ScrollToEnd();
        });
    });
}

void MenuCommands::NewSession() {
    if (form_ == nullptr) return;
    if (form_->NewSession()) return message_line_.Clear();
    ShowMessage(QMessageBox::Information, "message", Text("An encoding is still running."),
                Text("A new session can begin when it has ended. Stop ends it now and keeps what "
                     "was encoded so far as a whole file."));
}

void MenuCommands::SavePane() {
    QFileDialog& dialog = OpenDialog("saveFile", Text("Save the output"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilters({Text("Text files (*.txt)"), Text("All files (*)")});
    dialog.setDefaultSuffix(QStringLiteral("txt"));
    dialog.selectFile(QStringLiteral("tessivo-output.txt"));
    QObject::connect(&dialog, &QFileDialog::fileSelected, &dialog,
                     [this](const QString& path) { WritePane(path); });
    dialog.open();
}

void MenuCommands::WritePane(const QString& path) {
    const std::string text = LocaleText::OfUser().FromUtf8(pane_.toPlainText().toStdString());
    QSaveFile file(path);
    const auto size = static_cast<qint64>(text.size());
    const bool written =
        file.open(QIODevice::WriteOnly) && file.write(text.data(), size) == size && file.commit();
    if (written) return;
    ShowMessage(QMessageBox::Critical, "message", Text("The output could not be saved."),
                QDir::toNativeSeparators(path) + QStringLiteral(": ") + file.errorString());
}

void MenuCommands::ClearPane() { pane_.clear(); }

void MenuCommands::GoToCommand() {
    command_.setFocus(Qt::ShortcutFocusReason);
    command_.selectAll();
}

void MenuCommands::ShowAbout() {
    ShowMessage(
        QMessageBox::NoIcon, "about",
        Text("Tessivo %1").arg(QCoreApplication::applicationVersion()),
        Text("Records the screen, cameras and sound, and turns media files and whole folders "
             "into Windows Media files, in this window or on the console with the same "
             "command line.\n\n"
             "Free software under the GNU General Public License, version 3 or later: it may "
             "be used, studied, changed and shared, and comes without any warranty."));
}

void MenuCommands::Quit() { window_.close(); }

void MenuCommands::ShowMessage(QMessageBox::Icon icon, const char* name, const QString& text,
                               const QString& more) {
    message_ =
        std::make_unique<QMessageBox>(icon, window_.windowTitle(), text, QMessageBox::Ok, &window_);
    message_->setObjectName(QLatin1String(name));
    message_->setTextFormat(Qt::PlainText);
    message_->setInformativeText(more);
    message_->open();
}

}  // namespace platform::host
