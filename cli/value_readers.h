// Takes one value of an option out of a command's words, and says so when there is none.
//
// Numbers are written the same way everywhere, whatever the locale: blanks around are ignored, then
// an optional "+", decimal digits with an optional "." and fraction, and an optional exponent
// ("320", "+29.97", ".5", "3e5"). Thousands separators, hexadecimal forms and the names of
// infinities are not numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/output_pane.h"

namespace cli {

/// The failure mark of the readers of numbers.
inline constexpr std::int32_t kUnread = -1;

/// Every reader that fails has written its one line and returns its failure mark: -1 or "".
/// `option_index` only names the option, as typed, in that line. A word that begins with "-" is
/// never a value, so no option swallows the next one and no negative number can be given.
class ValueReaders {
  public:
    explicit ValueReaders(platform::OutputPane& pane);

    /// The value rounded to a whole number, halves to the even neighbour; 0 to 2147483647.
    std::int32_t ReadInteger(const std::vector<std::string>& words, std::size_t option_index,
                             std::size_t value_index);
    /// 0 or above, within single precision.
    float ReadFloat(const std::vector<std::string>& words, std::size_t option_index,
                    std::size_t value_index);
    /// The word as typed. Throws platform::Error (element not found) that names the option when the
    /// words end before the value.
    std::string ReadString(const std::vector<std::string>& words, std::size_t option_index,
                           std::size_t value_index);
    /// A text without an option, rounded as ReadInteger does. It may carry a "-"; but -1 itself,
    /// being the failure mark, counts as unreadable.
    std::int32_t ConvertStringToInteger(const std::string& text);

    // The lines of failed values, for values that only their option can judge.
    void RefuseFormat(const std::string& option);   // no value where one must be
    void RefuseInteger(const std::string& option);  // not a whole number that the option can hold
    void RefuseFloat(const std::string& option);    // not a number that the option can hold
    void RefuseText(const std::string& text);       // a text that is no whole number

  private:
    bool HasValue(const std::vector<std::string>& words, std::size_t option_index,
                  std::size_t value_index);

    platform::OutputPane& pane_;
};

}  // namespace cli
