#include "support/pulse_server.h"

#include <csignal>
#include <fstream>

namespace test_support {

PulseServer::PulseServer(const TempFolder& folder, const std::string& commands)
    : socket_(folder / "pulse.sock") {
    std::ofstream(folder / "server.pa")
        << commands << "load-module module-native-protocol-unix socket=" << socket_ << "\n";
    server_ = std::make_unique<BackgroundCommand>(
        std::vector<std::string>{"env", "HOME=" + folder.path().string(),
                                 "XDG_RUNTIME_DIR=" + folder.path().string(), "pulseaudio",
                                 "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1", "-n",
                                 "-F", folder / "server.pa"},
        folder.path());
    runs_ = Eventually([&] { return Control({"info"}).status == 0; });
}

CommandResult PulseServer::Control(std::vector<std::string> words) const {
    words.insert(words.begin(), "pactl");
    return RunCommand(words, {{"PULSE_SERVER", Address()}});
}

void PulseServer::Kill() {
    server_->Signal(SIGKILL);
    server_->Wait();
}

}  // namespace test_support
