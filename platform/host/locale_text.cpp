#include "platform/host/locale_text.h"

#include <iconv.h>
#include <langinfo.h>

#include <array>
#include <cerrno>
#include <clocale>

#include "platform/text.h"

namespace platform::host {

namespace {

constexpr const char* kUtf8 = "UTF-8";

class Converter {
  public:
    Converter(const std::string& to, const std::string& from)
        : handle_(::iconv_open(to.c_str(), from.c_str())) {}
    ~Converter() {
        if (IsOpen()) ::iconv_close(handle_);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // iconv_open marks its failure with the pointer -1.
    bool IsOpen() const { return reinterpret_cast<std::intptr_t>(handle_) != -1; }

    /// Takes from the front of `text` what can be converted; false when its first character cannot.
    bool Take(std::string_view& text, std::string& converted) {
        std::array<char, 1024> buffer{};
        char* in = const_cast<char*>(text.data());  // iconv does not write there
        std::size_t in_left = text.size();
        char* out = buffer.data();
        std::size_t out_left = buffer.size();
        const std::size_t result = ::iconv(handle_, &in, &in_left, &out, &out_left);
        const bool full = result == static_cast<std::size_t>(-1) && errno == E2BIG;
        converted.append(buffer.data(), buffer.size() - out_left);
        const bool moved = in_left < text.size();
        text.remove_prefix(text.size() - in_left);
        return text.empty() || moved || full;
    }

    void Restart() { ::iconv(handle_, nullptr, nullptr, nullptr, nullptr); }

  private:
    iconv_t handle_;
};

/// Bytes of the UTF-8 character at the front; 0 when there is none.
std::size_t Utf8Length(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::size_t length = byte(0) < 0x80U              ? 1U
                               : (byte(0) & 0xE0U) == 0xC0U ? 2U
                               : (byte(0) & 0xF0U) == 0xE0U ? 3U
                               : (byte(0) & 0xF8U) == 0xF0U ? 4U
                                                            : 0U;
    if (length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
    return length;
}

}  // namespace

void UseLocale() {
    const char* encoding =
        std::setlocale(LC_CTYPE, "") != nullptr ? ::nl_langinfo(CODESET) : "ANSI_X3.4-1968";
    if (std::string_view(encoding) == "ANSI_X3.4-1968") std::setlocale(LC_CTYPE, "C.UTF-8");
}

LocaleText::LocaleText(std::string_view encoding) : encoding_(encoding) {
    const std::string upper = UpperCase(encoding);
    const bool plain = upper == kUtf8 || upper == "UTF8" || upper == "ASCII" ||
                       upper == "US-ASCII" || upper == "ANSI_X3.4-1968";
    if (plain || !Converter(kUtf8, encoding_).IsOpen()) encoding_.clear();
}

LocaleText LocaleText::OfUser() { return LocaleText(::nl_langinfo(CODESET)); }

std::string LocaleText::ToUtf8(std::string_view text) const {
    if (encoding_.empty()) return std::string(text);
    Converter converter(kUtf8, encoding_);
    std::string converted;
    while (!text.empty()) {
        if (converter.Take(text, converted)) continue;
        converted.push_back(text.front());
        text.remove_prefix(1);
        converter.Restart();
    }
    return converted;
}

std::string LocaleText::FromUtf8(std::string_view text) const {
    if (encoding_.empty()) return std::string(text);
    Converter converter(encoding_, kUtf8);
    std::string converted;
    while (!text.empty()) {
        if (converter.Take(text, converted)) continue;
        const std::size_t length = Utf8Length(text);
        converted.push_back(length > 0 ? '?' : text.front());
        text.remove_prefix(length > 0 ? length : 1);
        converter.Restart();
    }
    return converted;
}

}  // namespace platform::host
