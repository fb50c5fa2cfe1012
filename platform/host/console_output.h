// What the console program writes: the pane's text to one stream, everything about it to another.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace platform::host {

/// Writes to descriptors that stay the caller's. Where the notes go to a terminal, a progress line
/// stands there between other output; it is taken away before anything else is written to a
/// terminal.
class ConsoleOutput {
  public:
    ConsoleOutput(int text_descriptor, int notes_descriptor);

    /// Text of the pane: "\r\n" becomes "\n"; written out at every line's end.
    void WriteText(std::string_view text);
    /// Writes what a last line without its end holds.
    void FlushText();
    /// A line of its own among the notes; "\r\n" in it becomes "\n".
    void WriteNote(std::string_view line);
    /// Without a line end, for a prompt.
    void WritePrompt(std::string_view text);
    void Beep();  // terminals only

    /// Draws the progress line anew, cut to the terminal's width; "" takes it away. Nothing when
    /// the notes do not go to a terminal.
    void ShowProgress(const std::string& line);
    /// From now on no progress line is drawn.
    void HideProgress() { notes_on_terminal_ = false; }

    /// Called once, when the reader of the text has gone away.
    void OnReaderGone(std::function<void()> handler) { on_reader_gone_ = std::move(handler); }
    /// Whether some of the text could not be written (a closed pipe, a full disk).
    bool TextLost() const { return text_lost_; }
    bool NotesOnTerminal() const { return notes_on_terminal_; }

  private:
    void WriteOut(std::string_view bytes);
    void WriteNotes(std::string_view bytes) const;
    std::size_t TerminalWidth() const;

    int text_descriptor_;
    int notes_descriptor_;
    bool text_on_terminal_;
    bool notes_on_terminal_;
    std::string pending_text_;  // the line that has no end yet
    std::string progress_;      // as it stands on the terminal
    bool text_lost_ = false;
    std::function<void()> on_reader_gone_;
};

}  // namespace platform::host
