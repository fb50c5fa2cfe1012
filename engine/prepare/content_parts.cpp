#include "engine/prepare/content_parts.h"

#include <sstream>
#include <string>

#include <fmt/format.h>

#include "engine/plan/value_ranges.h"
#include "platform/error.h"

namespace engine {
namespace {

[[noreturn]] void Refuse(std::string_view file, int line, std::string_view what) {
    throw platform::Error(platform::kInvalidData,
                          fmt::format("{}, line {}: {}; a line is a begin and an end in "
                                      "milliseconds and the content mode in between, as in \"1000 "
                                      "61500 2\"",
                                      file, line, what));
}

}  // namespace

std::vector<ContentPart> ReadContentParts(std::string_view text, std::string_view file) {
    std::vector<ContentPart> parts;
    std::istringstream lines{std::string(text)};
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        std::istringstream words(line);
        words >> std::ws;
        if (words.eof() || words.peek() == '#') continue;
        std::int32_t begin = 0;
        std::int32_t end = 0;
        std::int32_t mode = 0;
        std::string more;
        if (!(words >> begin >> end >> mode) || words >> more)
            Refuse(file, number, "not three whole numbers");
        if (mode < ranges::kContentMode.least || mode > ranges::kContentMode.most)
            Refuse(file, number, fmt::format("the content mode {} is none of 0 to 2", mode));
        if (begin < 0 || end <= begin)
            Refuse(file, number, fmt::format("the end {} is not after the begin {}", end, begin));
        const Ticks from = Ticks::FromMilliseconds(begin);
        if (!parts.empty() && from < parts.back().end)
            Refuse(file, number, fmt::format("{} is inside the part before", begin));
        parts.push_back({from, Ticks::FromMilliseconds(end), static_cast<ContentMode>(mode)});
    }
    return parts;
}

}  // namespace engine
