// The form's controls over Qt's widgets. The widgets are the window's and outlive these.
#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QString>
#include <QTimer>
#include <functional>
#include <string>

#include "platform/host/queued_call.h"
#include "platform/widgets.h"

namespace platform::host {

/// The output pane: a fixed-width text with tabs every eight characters, to be read and copied. A
/// line without room goes on below, from a word's beginning where it has one.
class OutputView : public QPlainTextEdit {
  public:
    explicit OutputView(QWidget* parent);
    void Append(const QString& text);
    void ScrollToEnd();

  protected:
    /// A pane that shows its end goes on showing it.
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void SetTabs();
};

/// One line that gives way: a text without room is shortened in its middle, and the whole one is
/// the tool tip instead of the explanation.
class ShorteningLabel : public QLabel {
  public:
    explicit ShorteningLabel(QWidget* parent);
    void SetWholeText(const QString& text);
    void SetExplanation(const QString& text);
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void Shorten();
    QString whole_text_;
    QString explanation_;
};

class QtCommandBox : public TextBox {
  public:
    explicit QtCommandBox(QLineEdit& edit) : edit_(edit) {}
    std::string Text() const override;
    void SetText(const std::string& text) override;
    void AppendText(const std::string& text) override;
    void ScrollToEnd() override;

  private:
    QLineEdit& edit_;
};

class QtPane : public TextBox {
  public:
    explicit QtPane(OutputView& view) : view_(view) {}
    std::string Text() const override;
    void SetText(const std::string& text) override;
    void AppendText(const std::string& text) override;
    void ScrollToEnd() override;

  private:
    OutputView& view_;
};

class QtButton : public Button {
  public:
    explicit QtButton(QPushButton& button) : button_(button) {}
    std::string Caption() const override;
    void SetCaption(const std::string& caption) override;

  private:
    QPushButton& button_;
};

class QtLabel : public Label {
  public:
    /// @param name  what the label is called while it is empty, for those who cannot see where it
    /// is
    /// @param prefix  whether the name also goes before a text that does not say what it is
    QtLabel(QLabel& label, QString name, bool prefix);
    std::string Caption() const override { return caption_; }
    void SetCaption(const std::string& caption) override;

  private:
    QLabel& label_;
    QString name_;
    bool prefix_;
    std::string caption_;
};

/// Keeps the form's numbers; the widget shows thousandths of their range.
class QtBar : public ProgressBar {
  public:
    explicit QtBar(QProgressBar& bar);
    float Min() const override { return min_; }
    void SetMin(float minimum) override;
    float Max() const override { return max_; }
    void SetMax(float maximum) override;
    float Value() const override { return value_; }
    void SetValue(float value) override;

  private:
    void Show();
    QProgressBar& bar_;
    float min_ = 0;
    float max_ = 100;
    float value_ = 0;
};

/// Ticks arrive as events of their own, so that a handler that runs the loop gets ticks there; a
/// tick that nobody has taken yet takes the next one in.
class QtTimer : public Timer {
  public:
    QtTimer();
    int Interval() const override { return interval_; }
    void SetInterval(int milliseconds) override;
    bool Enabled() const override { return enabled_; }
    void SetEnabled(bool enabled) override;
    void OnTick(std::function<void()> handler) { on_tick_ = std::move(handler); }

  private:
    void Restart();
    void Deliver();

    QTimer timer_;
    QueuedCall tick_call_{[this] { Deliver(); }};
    int interval_ = 0;
    bool enabled_ = false;
    bool on_its_way_ = false;
    std::function<void()> on_tick_;
};

}  // namespace platform::host
