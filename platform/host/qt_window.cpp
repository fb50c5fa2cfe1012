#include "platform/host/qt_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QStatusTipEvent>
#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/host/qt_recorded_size.h"
#include "platform/host/qt_spoken_window.h"
#include "platform/host/qt_window_place.h"

namespace platform::host {

namespace {

constexpr QSize kSmallest(560, 360);
constexpr QSize kUsual(900, 640);
constexpr int kIdleCheckInterval = 50;  // milliseconds

QMessageBox::Icon BoxIcon(MessageIcon icon) {
    switch (icon) {
        case MessageIcon::Critical:
            return QMessageBox::Critical;
        case MessageIcon::Question:
            return QMessageBox::Question;
        case MessageIcon::Exclamation:
            return QMessageBox::Warning;
        case MessageIcon::Information:
            return QMessageBox::Information;
    }
    return QMessageBox::NoIcon;
}

}  // namespace

QtWindow::QtWindow(std::string arguments)
    : arguments_(std::move(arguments)),
      settings_(QStringLiteral("tessivo"), QStringLiteral("tessivo")),
      recent_(settings_),
      options_(settings_),
      command_caption_(this),
      command_(recent_, this),
      go_(this),
      stop_(this),
      pause_(this),
      message_(this),
      result_(opener_, this),
      broadcast_(this),
      queue_(this),
      level_meter_(this),
      pane_(this),
      bar_(this),
      percent_(this),
      time_left_(this),
      recorded_(this),
      status_(this),
      file_(this),
      length_(this),
      elapsed_(this),
      expected_rate_(this),
      current_rate_(this),
      explanation_(this),
      runner_(*this, command_, queue_, message_, watch_, [this] { ClearFigures(); }),
      second_pass_(message_),
      start_(*this, loop_, watch_, options_, message_),
      menu_commands_(*this, loop_, command_, pane_, message_),
      desktop_(*this, watch_, options_, Commands(), opener_,
               [this](const QString& line) { message_.ShowError(line); }),
      menu_bar_(menu_commands_, command_, recent_, this),
      encoding_menu_(tr("&Encoding"), watch_, options_, desktop_, Commands(), &menu_bar_),
      screen_menu_(
          tr("Scree&n"), [this](const QString& line) { message_.ShowNote(line); }, &menu_bar_),
      sound_menu_(
          tr("So&und"), level_meter_, options_,
          [this](const QString& line) { message_.ShowNote(line); }, &menu_bar_),
      command_box_(command_),
      pane_box_(pane_),
      go_button_(go_),
      stop_button_(stop_),
      pause_button_(pause_),
      bar_control_(bar_),
      percent_label_(percent_, tr("Progress"), true),
      status_label_(status_, tr("Status"), true),
      file_label_(file_, tr("File"), false),
      length_label_(length_, tr("Media length"), false),
      elapsed_label_(elapsed_, tr("Elapsed time"), false),
      expected_rate_label_(expected_rate_, tr("Expected bit rate"), false),
      current_rate_label_(current_rate_, tr("Current bit rate"), false) {
    NameAndExplain();
    SpeakOfAsWindow<QtWindow>();

    command_caption_.setText(tr("&Command:"));
    command_caption_.setBuddy(&command_);
    command_.setAccessibleName(tr("Command"));
    command_.setPlaceholderText(tr("-input clip.avi -output clip.wmv -profile av350"));
    go_button_.SetCaption("&Go");
    go_.setDefault(true);
    go_.setAutoDefault(true);
    stop_button_.SetCaption("&Stop");
    stop_.setAutoDefault(true);
    pane_.setAccessibleName(tr("Output"));
    bar_.setAccessibleName(tr("Progress of the pass"));
    bar_.setTextVisible(false);

    setAcceptDrops(true);
    pane_.setAcceptDrops(false);  // the window takes what is dropped on it

    QAction* const help = menu_bar_.findChild<QMenu*>(QLatin1String("helpMenu"))->menuAction();
    menu_bar_.insertMenu(help, &encoding_menu_);
    menu_bar_.insertMenu(help, &screen_menu_);
    menu_bar_.insertMenu(help, &sound_menu_);
    watch_.OnPhase([this] { ShowPhase(); });
    watch_.OnEnd([this](const CommandReport& report) { result_.Show(report, watch_.IsCapture()); });
    ShowPhase();

    LayOut();
    RestorePlace(*this, settings_);
    command_.OnMoreCommands([this](const QStringList& commands) { queue_.Add(commands); });
    setTabOrder(&command_, &go_);
    setTabOrder(&go_, &stop_);
    setTabOrder(&stop_, &pause_);
    setTabOrder(&pause_, &pane_);
    command_.setFocus();

    idle_check_.setInterval(kIdleCheckInterval);
    connect(&idle_check_, &QTimer::timeout, this, [this] { CloseWhenIdle(); });
}

QtWindow::~QtWindow() = default;

RunCommands QtWindow::Commands() {
    return {[this] { return form_ != nullptr && form_->IsBusy(); }, [this] { go_.click(); },
            [this] {
                if (form_ != nullptr) form_->PauseOrResume();
            },
            [this] { Stop(); }, [this] { close(); }};
}

void QtWindow::ShowPhase() {
    // Not R, which is the menu of recent commands.
    pause_button_.SetCaption(watch_.phase() == RunPhase::Paused ? "Resu&me" : "&Pause");
    pause_.setEnabled(watch_.CanPause());
    if (watch_.phase() != RunPhase::Idle) return;
    left_.Restart();
    ShowTimeLeft(QString());
    recorded_.hide();
    broadcast_.Show({});
}

void QtWindow::NameAndExplain() {
    struct Row {
        QWidget& widget;
        const char* name;
        QString explanation;
    };
    const Row rows[] = {
        {command_, "txtCmd",
         tr("Words separated by blanks; Up and Down bring back earlier commands, a dropped file "
            "becomes the input")},
        {go_, "cmdGo", tr("Runs the command; asks first while an encoding runs")},
        {stop_, "cmdStop",
         tr("Ends the encoding; what was encoded so far is kept as a whole file")},
        {pause_, "cmdPause", tr("Takes nothing in until it is pressed again; the file has no gap")},
        {pane_, "txtInfo", tr("Everything that commands have reported")},
        {bar_, "pb1", tr("How much of this pass is done")},
        {percent_, "lblprgs", tr("How much of this pass is done, in percent")},
        {time_left_, "timeLeft", tr("How long the encoding will still take, both passes of two")},
        {recorded_, "recordedSize",
         tr("How large the recording has become, and how much room is left where it is written")},
        {status_, "lblStatus", tr("What the encoder does at the moment")},
        {file_, "lblFile", tr("The file that is being encoded")},
        {length_, "lblETm", tr("The length of what is encoded or recorded, in seconds")},
        {elapsed_, "Label1", tr("How far this pass has come, in seconds of playing time")},
        {expected_rate_, "Label2", tr("The bit rate that the output was asked to have")},
        {current_rate_, "Label3", tr("The bit rate of what is being written now")},
        {explanation_, "explanation", QString()},
    };
    for (const Row& row : rows) {
        row.widget.setObjectName(QLatin1String(row.name));
        if (auto* shortening = dynamic_cast<ShorteningLabel*>(&row.widget))
            shortening->SetExplanation(row.explanation);
        else
            row.widget.setToolTip(row.explanation);
        row.widget.setStatusTip(row.explanation);
        row.widget.setAccessibleDescription(row.explanation);
    }
    time_left_.setAccessibleName(tr("Time left"));
    recorded_.setAccessibleName(tr("Size of the recording"));
    explanation_.setAccessibleName(tr("Explanation"));
    explanation_.setTextFormat(Qt::PlainText);
}

bool QtWindow::event(QEvent* event) {
    if (event->type() == QEvent::Paint && !std::exchange(painted_, true)) painted_call_.Post();
    if (event->type() != QEvent::StatusTip) return QWidget::event(event);
    explanation_.SetWholeText(static_cast<QStatusTipEvent*>(event)->tip());
    return true;
}

void QtWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (command_.isEnabled() && DraggedFile(*event->mimeData())) event->acceptProposedAction();
}

void QtWindow::dropEvent(QDropEvent* event) {
    const auto file = DraggedFile(*event->mimeData());
    if (!file) return;
    command_.AppendInput(*file);
    event->acceptProposedAction();
}

void QtWindow::LayOut() {
    command_row_.addWidget(&command_caption_);
    command_row_.addWidget(&command_, 1);
    command_row_.addWidget(&go_);
    command_row_.addWidget(&stop_);
    command_row_.addWidget(&pause_);

    percent_.setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    percent_.setMinimumWidth(percent_.fontMetrics().horizontalAdvance(QStringLiteral("100%")));
    progress_row_.addWidget(&bar_, 1);
    progress_row_.addWidget(&percent_);
    progress_row_.addWidget(&time_left_);
    progress_row_.addWidget(&recorded_);

    facts_.setHorizontalSpacing(18);
    facts_.setVerticalSpacing(6);
    facts_.addWidget(&status_, 0, 0, 1, 2);
    facts_.addWidget(&length_, 0, 2);
    facts_.addWidget(&file_, 1, 0, 1, 3);
    // The figures keep their two lines while empty, so that nothing moves when a run starts.
    const int figure_height = 2 * elapsed_.fontMetrics().lineSpacing();
    int column = 0;
    for (QLabel* figure : {&elapsed_, &expected_rate_, &current_rate_}) {
        figure->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        figure->setMinimumHeight(figure_height);
        facts_.setColumnStretch(column, 1);
        facts_.addWidget(figure, 2, column++);
    }

    rows_.setMenuBar(&menu_bar_);
    rows_.setContentsMargins(12, 8, 12, 6);
    rows_.setSpacing(8);
    rows_.addLayout(&command_row_);
    rows_.addWidget(&queue_);
    rows_.addWidget(&level_meter_);
    rows_.addWidget(&message_);
    rows_.addWidget(&result_);
    rows_.addWidget(&broadcast_);
    rows_.addWidget(&pane_, 1);
    rows_.addLayout(&progress_row_);
    rows_.addLayout(&facts_);
    rows_.addWidget(&explanation_);
    setLayout(&rows_);
    setMinimumSize(kSmallest.expandedTo(rows_.minimumSize()));
    resize(kUsual.expandedTo(minimumSize()));
}

void QtWindow::SetForm(FormEvents& form) {
    form_ = &form;
    watch_.SetForm(form);
    menu_commands_.SetForm(form);
    runner_.SetForm(form, arguments_);
    second_pass_.SetForm(form);
    command_.Completer().SetForm(form);
    connect(&go_, &QPushButton::clicked, this,
            [this] { runner_.Run([this] { form_->cmdGo_Click(); }); });
    connect(&stop_, &QPushButton::clicked, this, [this] { Stop(); });
    connect(&pause_, &QPushButton::clicked, this, [this] { form_->PauseOrResume(); });
    connect(&command_, &QLineEdit::returnPressed, this,
            [this] { runner_.Run([this] { form_->txtCmd_KeyPress(kEnterKey); }); });
    timer_.OnTick([this] { Tick(); });
}

void QtWindow::Tick() {
    form_->Timer1_Timer();
    if (watch_.phase() == RunPhase::Idle) return;
    const RunProgress progress = form_->Progress();
    ShowTimeLeft(QString::fromStdString(left_.TextOf(progress, TimeLeft::Clock::now())));
    broadcast_.Show(progress.network);
    if (watch_.IsCapture()) ShowRecordedSize(progress);
}

void QtWindow::ShowTimeLeft(const QString& text) {
    time_left_.setText(text);
    time_left_.setVisible(!text.isEmpty());
}

void QtWindow::ShowRecordedSize(const RunProgress& progress) {
    const auto free_bytes = FreeBytes(progress);
    const QString text = RecordedText(progress, free_bytes);
    recorded_.setText(text);
    recorded_.setVisible(!text.isEmpty());
    recorded_.setAccessibleName(tr("Size of the recording: %1").arg(text));
    if (free_bytes && IsScarce(*free_bytes))
        message_.ShowNote(tr("There is little room left where the recording is written."));
}

void QtWindow::Stop() {
    if (form_ == nullptr) return;
    second_pass_.BeforeStop();
    runner_.HaltQueue();
    ShowTimeLeft(QString());  // the ticks that would keep it right have ended
    form_->cmdStop_Click();
}

void QtWindow::ClearFigures() {
    result_.hide();
    bar_control_.SetValue(bar_control_.Min());
    for (Label* label : {&lblprgs(), &lblFile(), &lblETm(), &Label1(), &Label2(), &Label3()})
        label->SetCaption("");
}

void QtWindow::SetCaption(const std::string& caption) {
    setWindowTitle(QString::fromStdString(caption));
}

void QtWindow::SetMousePointer(MousePointer pointer) {
    // The busy pointer still points: everything in the window stays usable. Text fields have
    // pointers of their own; the pane is most of the window and follows.
    if (pointer == MousePointer::Hourglass) {
        setCursor(Qt::BusyCursor);
        pane_.viewport()->setCursor(Qt::BusyCursor);
    } else {
        unsetCursor();
        pane_.viewport()->setCursor(Qt::IBeamCursor);
    }
}

void QtWindow::Beep() { QApplication::beep(); }

void QtWindow::MessageBox(const std::string& text, const std::string& title, MessageIcon icon) {
    if (unattended_) {
        std::fprintf(stderr, "%s\n%s\n", title.c_str(), text.c_str());
        return;
    }
    QMessageBox box(
        BoxIcon(icon), QString::fromStdString(title),
        QString::fromStdString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")),
        QMessageBox::Ok, this);
    box.setTextFormat(Qt::PlainText);
    box.setObjectName(QStringLiteral("message"));
    box.exec();
}

void QtWindow::closeEvent(QCloseEvent* event) {
    if (form_ == nullptr || unloaded_) return event->accept();
    if (closing_ || form_->IsBusy()) {
        event->ignore();
        if (!closing_) AskBeforeClosing();
        return;
    }
    unloaded_ = true;
    KeepPlace(*this, settings_);
    form_->Form_Unload();
    event->accept();
    // The toolkit ends with the last window that can be seen.
    if (!isVisible()) QCoreApplication::exit();
}

void QtWindow::AskBeforeClosing() {
    question_.Ask({tr("Stop it and close?"), tr("&Stop and close"), "stopAndClose",
                   [this] { StopAndClose(); }});
}

void QtWindow::StopAndClose() {
    if (std::exchange(closing_, true)) return;
    go_.setEnabled(false);
    command_.setEnabled(false);
    if (form_ != nullptr && form_->IsBusy()) Stop();
    idle_check_.start();
}

void QtWindow::EndUnattended() {
    // Another call: what was stopped may be the first of two passes.
    if (std::exchange(unattended_, true) && form_ != nullptr && form_->IsBusy()) Stop();
    if (QWidget* box = QApplication::activeModalWidget()) box->close();
    StopAndClose();
}

void QtWindow::CloseWhenIdle() {
    if (form_ != nullptr && form_->IsBusy()) return;
    // A message that the form shows is read first.
    if (QApplication::activeModalWidget() != nullptr) return;
    idle_check_.stop();
    closing_ = false;
    close();
}

}  // namespace platform::host
