#include "end_to_end/console_run.h"

#include <cmath>
#include <cstdlib>
#include <sstream>

namespace test_support {

CommandResult Console(const std::vector<std::string>& words,
                      const std::map<std::string, std::string>& environment) {
    std::vector<std::string> all = {TESSIVO_CONSOLE};
    all.insert(all.end(), words.begin(), words.end());
    return RunCommand(all, environment);
}

double ReportFigure(const std::string& pane, const std::string& label, int occurrence) {
    std::istringstream lines(pane);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t start = line.find_first_not_of('\t');
        if (start == std::string::npos || line.compare(start, label.size(), label) != 0) continue;
        if (occurrence-- > 0) continue;
        std::string digits;
        for (const char c : line.substr(start + label.size()))
            if ((c >= '0' && c <= '9') || c == '.') digits += c;
        return digits.empty() ? std::nan("") : std::atof(digits.c_str());
    }
    return std::nan("");
}

int CountOf(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

void MakeClip(const std::string& path, int seconds, const std::string& size, int rate) {
    const std::string length = std::to_string(seconds);
    Ffmpeg("-f lavfi -i testsrc2=size=" + size + ":rate=" + std::to_string(rate) +
               ":duration=" + length + ",noise=alls=12:allf=t " +
               "-f lavfi -i sine=frequency=440:sample_rate=44100:duration=" + length +
               ",volume=0.5 -c:v mjpeg -q:v 3 -c:a pcm_s16le -ac 2",
           path);
}

}  // namespace test_support
