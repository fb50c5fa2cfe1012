#include "platform/host/qt_hotkeys.h"

#include <xcb/xcb.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

namespace platform::host {

namespace {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using ReplyPtr = std::unique_ptr<Reply, FreeReply>;

// Caps Lock and Num Lock: to the server they are modifiers like any other.
constexpr std::uint16_t kLocks[] = {0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2,
                                    XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};
constexpr std::uint16_t kModifiers =
    XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;
constexpr std::uint32_t kRepeatGap = 2;  // ms between the release and the press of a held key

struct NamedKey {
    Qt::Key key;
    xcb_keysym_t symbol;
};
// clang-format off
constexpr NamedKey kNamedKeys[] = {
    // key              symbol, of the X protocol's appendix A
    {Qt::Key_Pause,     0xff13},
    {Qt::Key_ScrollLock, 0xff14},
    {Qt::Key_Print,     0xff61},
    {Qt::Key_Insert,    0xff63},
    {Qt::Key_Delete,    0xffff},
    {Qt::Key_Home,      0xff50},
    {Qt::Key_End,       0xff57},
    {Qt::Key_PageUp,    0xff55},
    {Qt::Key_PageDown,  0xff56},
    {Qt::Key_Left,      0xff51},
    {Qt::Key_Up,        0xff52},
    {Qt::Key_Right,     0xff53},
    {Qt::Key_Down,      0xff54},
};
// clang-format on
constexpr xcb_keysym_t kSymbolF1 = 0xffbe;

std::optional<xcb_keysym_t> SymbolOf(Qt::Key key) {
    if (key >= Qt::Key_F1 && key <= Qt::Key_F35)
        return kSymbolF1 + static_cast<xcb_keysym_t>(key - Qt::Key_F1);
    if (key >= Qt::Key_A && key <= Qt::Key_Z)  // the unshifted letter
        return static_cast<xcb_keysym_t>(key) + ('a' - 'A');
    if (key >= Qt::Key_Space && key <= Qt::Key_AsciiTilde) return static_cast<xcb_keysym_t>(key);
    for (const NamedKey& each : kNamedKeys)
        if (each.key == key) return each.symbol;
    return std::nullopt;
}

std::uint16_t MaskOf(Qt::KeyboardModifiers modifiers) {
    std::uint16_t mask = 0;
    if (modifiers & Qt::ControlModifier) mask |= XCB_MOD_MASK_CONTROL;
    if (modifiers & Qt::ShiftModifier) mask |= XCB_MOD_MASK_SHIFT;
    if (modifiers & Qt::AltModifier) mask |= XCB_MOD_MASK_1;
    if (modifiers & Qt::MetaModifier) mask |= XCB_MOD_MASK_4;
    return mask;
}

xcb_connection_t* Connection() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 == nullptr ? nullptr : x11->connection();
}

xcb_window_t Root(xcb_connection_t* connection) {
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

std::optional<xcb_keycode_t> CodeOf(xcb_connection_t* connection, xcb_keysym_t symbol) {
    const xcb_setup_t* const setup = xcb_get_setup(connection);
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const ReplyPtr<xcb_get_keyboard_mapping_reply_t> reply(xcb_get_keyboard_mapping_reply(
        connection, xcb_get_keyboard_mapping(connection, setup->min_keycode, count), nullptr));
    if (!reply) return std::nullopt;
    const xcb_keysym_t* const symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    const int columns = reply->keysyms_per_keycode;
    for (int column = 0; column < columns; ++column)
        for (int code = 0; code < count; ++code)
            if (symbols[code * columns + column] == symbol)
                return static_cast<xcb_keycode_t>(setup->min_keycode + code);
    return std::nullopt;
}

void Ungrab(xcb_connection_t* connection, std::uint8_t code, std::uint16_t modifiers) {
    for (const std::uint16_t locks : kLocks)
        xcb_ungrab_key(connection, code, Root(connection),
                       static_cast<std::uint16_t>(modifiers | locks));
    xcb_flush(connection);
}

struct ServerKey {
    std::uint8_t code;
    std::uint16_t modifiers;
};

std::optional<ServerKey> KeyOf(const QKeySequence& keys) {
    if (keys.isEmpty()) return std::nullopt;
    const auto symbol = SymbolOf(keys[0].key());
    const auto code = symbol ? CodeOf(Connection(), *symbol) : std::nullopt;
    if (!code) return std::nullopt;
    return ServerKey{*code, MaskOf(keys[0].keyboardModifiers())};
}

/// False, and nothing is taken, where another program holds it.
bool Grab(const ServerKey& key) {
    xcb_connection_t* const connection = Connection();
    xcb_void_cookie_t cookies[std::size(kLocks)];
    for (std::size_t i = 0; i < std::size(kLocks); ++i)
        cookies[i] = xcb_grab_key_checked(connection, 0, Root(connection),
                                          static_cast<std::uint16_t>(key.modifiers | kLocks[i]),
                                          key.code, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    bool taken = true;
    for (const xcb_void_cookie_t cookie : cookies)
        taken = !ReplyPtr<xcb_generic_error_t>(xcb_request_check(connection, cookie)) && taken;
    if (!taken) Ungrab(connection, key.code, key.modifiers);
    return taken;
}

}  // namespace

Hotkeys::Hotkeys() {
    if (AreOffered()) QCoreApplication::instance()->installNativeEventFilter(this);
}

Hotkeys::~Hotkeys() {
    ReleaseAll();
    if (AreOffered()) QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool Hotkeys::AreOffered() {
    // An X server inside a Wayland desktop hears only the keys of its own programs.
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) return false;
    return QGuiApplication::platformName() == QLatin1String("xcb") && Connection() != nullptr;
}

bool Hotkeys::CanBeGlobal(const QKeySequence& keys) {
    if (keys.isEmpty() || !SymbolOf(keys[0].key())) return false;
    const bool types = keys[0].key() >= Qt::Key_Space && keys[0].key() <= Qt::Key_AsciiTilde;
    const Qt::KeyboardModifiers with = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    return !types || (keys[0].keyboardModifiers() & with) != Qt::NoModifier;
}

Hotkeys::Answer Hotkeys::Take(const QKeySequence& keys, std::function<void()> handler) {
    if (!AreOffered()) return Answer::Unknown;
    const auto key = KeyOf(keys);
    if (!key) return Answer::Unknown;
    if (!Grab(*key)) return Answer::Held;
    keys_.push_back({key->code, key->modifiers, std::move(handler)});
    return Answer::Taken;
}

Hotkeys::Answer Hotkeys::Try(const QKeySequence& keys) {
    if (!AreOffered()) return Answer::Unknown;
    const auto key = KeyOf(keys);
    if (!key) return Answer::Unknown;
    if (!Grab(*key)) return Answer::Held;
    Ungrab(Connection(), key->code, key->modifiers);
    return Answer::Taken;
}

void Hotkeys::ReleaseAll() {
    for (const Key& key : keys_) Ungrab(Connection(), key.code, key.modifiers);
    keys_.clear();
}

bool Hotkeys::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) {
    if (keys_.empty() || type != "xcb_generic_event_t") return false;
    const auto* const event = static_cast<const xcb_generic_event_t*>(message);
    const int kind = event->response_type & 0x7f;  // the highest bit says who sent it
    if (kind != XCB_KEY_PRESS && kind != XCB_KEY_RELEASE) return false;
    const auto* const press = static_cast<const xcb_key_press_event_t*>(message);
    if (press->event != Root(Connection())) return false;
    if (kind == XCB_KEY_RELEASE) {
        released_code_ = press->detail;
        released_at_ = press->time;
        return false;
    }
    if (press->detail == released_code_ && press->time - released_at_ < kRepeatGap) return false;
    for (const Key& key : keys_) {
        if (key.code != press->detail || key.modifiers != (press->state & kModifiers)) continue;
        const auto handler = key.handler;  // may release the keys
        handler();
        return true;
    }
    return false;
}

}  // namespace platform::host
