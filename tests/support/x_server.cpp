#include "support/x_server.h"

#include <signal.h>

#include <fstream>
#include <stdexcept>

namespace test_support {

XServer::XServer(const std::string& screen, const std::vector<std::string>& options) {
    std::vector<std::string> words = {"Xvfb",     "-displayfd", "1", "-nolisten", "tcp",
                                      "-noreset", "-screen",    "0", screen};
    words.insert(words.end(), options.begin(), options.end());
    process_ = std::make_unique<BackgroundCommand>(words, folder_.path());
    std::string number;
    if (!Eventually([&] {
            std::ifstream shown(folder_ / "out");
            return static_cast<bool>(std::getline(shown, number)) && !shown.eof();
        }))
        throw std::runtime_error("Xvfb is needed, see packages.txt");
    display_ = ":" + number;
}

void XServer::Kill() {
    Signal(SIGKILL);
    process_->Wait();
}

void XServer::Randr(std::vector<std::string> words) const {
    words.insert(words.begin(), "xrandr");
    const CommandResult result = RunCommand(words, {{"DISPLAY", display_}});
    if (result.status != 0)
        throw std::runtime_error("xrandr of x11-xserver-utils, see packages.txt: " + result.err);
}

void XServer::Resize(int width, int height) const {
    const std::string name = std::to_string(width) + "x" + std::to_string(height) + "own";
    std::vector<std::string> mode = {"--newmode", name, "10"};
    for (int size : {width, height})
        for (int further = 0; further < 4; ++further)
            mode.push_back(std::to_string(size + further));
    Randr(mode);
    Randr({"--addmode", "screen", name});
    Randr({"--output", "screen", "--mode", name});
}

}  // namespace test_support
