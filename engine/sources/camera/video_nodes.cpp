#include "engine/sources/camera/video_nodes.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/file_descriptor.h"

namespace engine {
namespace {

class NodeDescriptor {
  public:
    explicit NodeDescriptor(const std::string& path)
        : descriptor_(open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)),
          forbidden_(!descriptor_.IsOpen() && (errno == EACCES || errno == EPERM)) {}

    bool IsForbidden() const { return forbidden_; }
    bool Query(v4l2_capability& answer) const {
        if (!descriptor_.IsOpen()) return false;
        int result = -1;
        do {
            result = ioctl(descriptor_.Number(), VIDIOC_QUERYCAP, &answer);
        } while (result < 0 && errno == EINTR);
        return result == 0;
    }

  private:
    platform::FileDescriptor descriptor_;
    bool forbidden_;
};

std::string FirstLine(const std::string& path) {
    std::string line;
    std::ifstream file(path);
    std::getline(file, line);
    return line;
}

// A node that this user may not open. The kernel tells everybody what it is called, and the first
// node of a camera is the one with the frames.
std::optional<VideoNode> ForbiddenNode(const std::string& path, int number) {
    const std::string facts = "/sys/class/video4linux/video" + std::to_string(number);
    if (FirstLine(facts + "/index") != "0") return std::nullopt;
    return VideoNode{path, FirstLine(facts + "/name"), V4L2_CAP_VIDEO_CAPTURE, 0};
}

// "video12" -> 12.
std::optional<int> NodeNumber(std::string_view file_name) {
    constexpr std::string_view kPrefix = "video";
    if (file_name.substr(0, kPrefix.size()) != kPrefix) return std::nullopt;
    const std::string_view digits = file_name.substr(kPrefix.size());
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    return number;
}

std::vector<int> NodeNumbers() {
    std::vector<int> numbers;
    std::error_code error;
    std::filesystem::directory_iterator entry("/dev", error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        if (const auto number = NodeNumber(entry->path().filename().native()))
            numbers.push_back(*number);
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

}  // namespace

std::vector<VideoNode> VideoNodes() {
    std::vector<VideoNode> nodes;
    for (const int number : NodeNumbers()) {
        const std::string path = "/dev/video" + std::to_string(number);
        const NodeDescriptor node(path);
        if (node.IsForbidden())
            if (const auto forbidden = ForbiddenNode(path, number)) nodes.push_back(*forbidden);
        v4l2_capability answer{};
        if (!node.Query(answer)) continue;
        const auto* card = reinterpret_cast<const char*>(answer.card);
        nodes.push_back({path, std::string(card, strnlen(card, sizeof answer.card)),
                         answer.capabilities, answer.device_caps});
    }
    return nodes;
}

}  // namespace engine
