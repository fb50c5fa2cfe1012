#include "app/number_pictures.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <iterator>

namespace app {

namespace {

constexpr std::size_t kGroup = 3;

/// What a picture asks for.
struct Picture {
    std::size_t whole_digits = 0;     // at least so many before the point
    std::size_t fraction_digits = 0;  // at least so many behind it
    std::size_t fraction_places = 0;  // at most so many
    bool grouped = false;
};

Picture ReadPicture(std::string_view text) {
    assert(text.find_first_not_of("#0,.") == std::string_view::npos);
    Picture picture;
    const std::size_t point = std::min(text.find('.'), text.size());
    const std::string_view whole = text.substr(0, point);
    const std::string_view fraction = text.substr(std::min(point + 1, text.size()));

    // A forced digit forces all places between itself and the point.
    std::string places;
    std::copy_if(whole.begin(), whole.end(), std::back_inserter(places),
                 [](char c) { return c != ','; });
    picture.grouped = places.size() != whole.size();
    const std::size_t first_forced = places.find('0');
    if (first_forced != std::string::npos) picture.whole_digits = places.size() - first_forced;
    const std::size_t last_forced = fraction.rfind('0');
    if (last_forced != std::string_view::npos) picture.fraction_digits = last_forced + 1;
    picture.fraction_places = fraction.size();
    return picture;
}

/// Drops the digits of `digits` (of which the last `decimals` stand behind the point) past
/// `places`. Returns how many then stand behind the point.
std::size_t RoundAwayFromZero(std::string& digits, std::size_t decimals, std::size_t places) {
    if (decimals <= places) return decimals;
    const std::size_t kept = digits.size() - (decimals - places);
    const bool up = digits[kept] >= '5';
    digits.resize(kept);
    if (up) {
        auto digit = digits.rbegin();
        for (; digit != digits.rend() && *digit == '9'; ++digit) *digit = '0';
        if (digit == digits.rend())
            digits.insert(digits.begin(), '1');
        else
            ++*digit;
    }
    return places;
}

void Group(std::string& whole) {
    for (std::size_t behind = kGroup; behind < whole.size(); behind += kGroup + 1)
        whole.insert(whole.size() - behind, 1, ',');
}

}  // namespace

std::string FormatPicture(std::string_view text, Decimal value) {
    const Picture picture = ReadPicture(text);
    const auto decimals = static_cast<std::size_t>(value.decimals);

    // The magnitude as unsigned, so that the lowest number has one.
    const auto bits = static_cast<std::uint64_t>(value.count);
    std::string digits = std::to_string(value.count < 0 ? std::uint64_t{0} - bits : bits);
    if (digits.size() < decimals) digits.insert(0, decimals - digits.size(), '0');

    const std::size_t behind_point = RoundAwayFromZero(digits, decimals, picture.fraction_places);
    std::string whole = digits.substr(0, digits.size() - behind_point);
    std::string fraction = digits.substr(digits.size() - behind_point);

    const bool negative = value.count < 0 && digits.find_first_not_of('0') != std::string::npos;
    whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size()));
    if (whole.size() < picture.whole_digits)
        whole.insert(0, picture.whole_digits - whole.size(), '0');
    if (picture.grouped) Group(whole);

    fraction.resize(fraction.find_last_not_of('0') + 1);
    if (fraction.size() < picture.fraction_digits) fraction.resize(picture.fraction_digits, '0');

    std::string written = negative ? "-" : "";
    written += whole;
    if (!fraction.empty()) written += '.' + fraction;
    return written;
}

}  // namespace app
