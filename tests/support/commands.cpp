#include "support/commands.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

extern char** environ;

namespace test_support {

std::string FileText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

namespace {

int Spawn(const std::vector<std::string>& words,
          const std::map<std::string, std::string>& environment,
          const std::filesystem::path& folder) {
    std::vector<std::string> variables;
    for (char** each = environ; *each != nullptr; ++each) {
        const std::string name(*each, std::string(*each).find('='));
        if (!environment.contains(name)) variables.emplace_back(*each);
    }
    for (const auto& [name, value] : environment) variables.push_back(name + "=" + value);

    const auto pointers = [](const std::vector<std::string>& texts) {
        std::vector<char*> result;
        for (const std::string& text : texts) result.push_back(const_cast<char*>(text.c_str()));
        result.push_back(nullptr);
        return result;
    };
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    const std::string out = folder / "out";
    const std::string err = folder / "err";
    constexpr int kCreate = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), kCreate, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), kCreate, 0600);
    pid_t process = -1;
    const int error = posix_spawnp(&process, words.at(0).c_str(), &actions, nullptr,
                                   pointers(words).data(), pointers(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error("cannot start " + words.at(0));
    return process;
}

int WaitFor(int process) {
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

CommandResult RunCommand(const std::vector<std::string>& words,
                         const std::map<std::string, std::string>& environment) {
    const TempFolder folder;
    const int status = WaitFor(Spawn(words, environment, folder.path()));
    return {status, FileText(folder / "out"), FileText(folder / "err")};
}

BackgroundCommand::BackgroundCommand(const std::vector<std::string>& words,
                                     const std::filesystem::path& folder)
    : folder_(folder), process_(Spawn(words, {}, folder)) {}

BackgroundCommand::~BackgroundCommand() {
    if (process_ < 0) return;
    kill(process_, SIGKILL);
    WaitFor(process_);
}

void BackgroundCommand::Signal(int number) const { kill(process_, number); }

CommandResult BackgroundCommand::Wait() {
    const int status = WaitFor(process_);
    process_ = -1;
    return {status, FileText(folder_ / "out"), FileText(folder_ / "err")};
}

TempFolder::TempFolder() {
    std::string name = std::filesystem::temp_directory_path() / "tessivo-test-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

bool Eventually(const std::function<bool()>& happened) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!happened()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

std::string Ffmpeg(const std::string& arguments, const std::string& out) {
    const std::string command = "ffmpeg -nostdin -v error -y " + arguments + " '" + out + "'";
    const CommandResult result = RunCommand({"sh", "-c", command});
    if (result.status != 0) throw std::runtime_error(command + ": " + result.err);
    return out;
}

std::string DecodeMessages(const std::string& file) {
    const CommandResult result =
        RunCommand({"ffmpeg", "-v", "error", "-i", file, "-f", "null", "-"});
    return result.status == 0 ? result.err : "failed: " + result.err;
}

std::map<std::string, std::string> Probe(const std::string& file, const std::string& stream) {
    std::vector<std::string> words = {"ffprobe", "-v", "error", "-of",
                                      "default=noprint_wrappers=1"};
    if (stream.empty()) {
        words.insert(words.end(), {"-show_format"});
    } else {
        words.insert(words.end(), {"-count_packets", "-select_streams", stream, "-show_streams"});
    }
    words.push_back(file);
    std::map<std::string, std::string> entries;
    std::istringstream lines(RunCommand(words).out);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find('=');
        const std::string key = line.substr(0, equals);
        // A stream's entries stand before those of its tags, which are named "TAG:...".
        const bool is_tag = key.rfind("TAG:", 0) == 0;
        entries[is_tag ? "tag:" + key.substr(4) : key] = line.substr(equals + 1);
    }
    return entries;
}

double ProbeNumber(const std::string& file, const std::string& stream, const std::string& key) {
    const std::map<std::string, std::string> entries = Probe(file, stream);
    const auto found = entries.find(key);
    if (found == entries.end()) return std::nan("");
    char* end = nullptr;
    const double value = std::strtod(found->second.c_str(), &end);
    return end == found->second.c_str() ? std::nan("") : value;
}

double ProbeBytes(const std::string& file, const std::string& stream) {
    std::istringstream sizes(RunCommand({"ffprobe", "-v", "error", "-select_streams", stream,
                                         "-show_entries", "packet=size", "-of", "csv=p=0", file})
                                 .out);
    double sum = 0;
    for (std::string line; std::getline(sizes, line);) sum += std::atof(line.c_str());
    return sum;
}

}  // namespace test_support
