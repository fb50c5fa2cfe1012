// Text between the locale's encoding and UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace platform::host {

/// Takes the environment's character encoding for this process, and UTF-8 where the environment
/// names none, so that names beyond ASCII work there. Numbers keep their point. Call once, first
/// thing in main.
void UseLocale();

/// Nothing is refused: a byte that does not belong to its encoding is passed on as it is, a
/// character that the locale cannot write becomes "?".
class LocaleText {
  public:
    /// @param encoding  as nl_langinfo(CODESET) names it. UTF-8, ASCII and names that the system
    ///                  does not know pass every byte unchanged.
    explicit LocaleText(std::string_view encoding);
    static LocaleText OfUser();

    std::string ToUtf8(std::string_view text) const;
    std::string FromUtf8(std::string_view text) const;

  private:
    std::string encoding_;  // "" = bytes pass unchanged
};

}  // namespace platform::host
