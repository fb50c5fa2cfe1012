// Keys that work while another program is in front.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QKeySequence>
#include <cstdint>
#include <functional>
#include <vector>

namespace platform::host {

/// Only X11 lets a program have such keys. User-interface thread; the application object must
/// outlive it.
class Hotkeys : public QAbstractNativeEventFilter {
  public:
    enum class Answer {
        Taken,
        Held,     // by another program
        Unknown,  // the keyboard has no such key, or it cannot be one
    };

    Hotkeys();
    ~Hotkeys() override;
    Hotkeys(const Hotkeys&) = delete;
    Hotkeys& operator=(const Hotkeys&) = delete;

    static bool AreOffered();
    /// Whether a hotkey can be this at all: a key that is known by name, and one that types
    /// something only with Ctrl, Alt or Meta, since every other program would miss it.
    static bool CanBeGlobal(const QKeySequence& keys);
    /// Takes the first key of the sequence, with its modifiers and whatever locks are on. The
    /// handler is called once a press, however long the key is held. Where they are not offered:
    /// Unknown.
    Answer Take(const QKeySequence& keys, std::function<void()> handler);
    /// What Take would answer.
    static Answer Try(const QKeySequence& keys);
    void ReleaseAll();

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

  private:
    struct Key {
        std::uint8_t code;
        std::uint16_t modifiers;
        std::function<void()> handler;
    };

    std::vector<Key> keys_;
    std::uint8_t released_code_ = 0;
    std::uint32_t released_at_ = 0;  // the server's milliseconds
};

}  // namespace platform::host
