#include "engine/sources/screen/named_area.h"

#include <fmt/format.h>

#include <charconv>
#include <string_view>

#include "engine/sources/screen/area_finder.h"
#include "engine/sources/screen/x11_display.h"
#include "platform/error.h"

namespace engine {
namespace {

constexpr std::string_view kMonitorDevice = "x11:monitor:";
constexpr std::int32_t kMostPixels = 32767;  // the protocol's largest screen
constexpr std::int32_t kFewestPixels = 2;    // of a frame that can be coded

// Takes a number and what stands behind it off the text's front.
bool TakeNumber(std::string_view& text, std::string_view behind, std::int32_t fewest,
                std::int32_t& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || value < fewest || value > kMostPixels) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (!text.starts_with(behind)) return false;
    text.remove_prefix(behind.size());
    return true;
}

bool ReadRegion(std::string_view text, PixelBox& region) {
    return TakeNumber(text, "x", kFewestPixels, region.width) &&
           TakeNumber(text, "+", kFewestPixels, region.height) &&
           TakeNumber(text, "+", 0, region.x) && TakeNumber(text, "", 0, region.y) && text.empty();
}

bool ReadArea(std::string_view text, ScreenArea& area) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return text.empty();
    const std::string_view word = text.substr(0, colon);
    text.remove_prefix(colon + 1);
    if (word == "region") {
        area.kind = ScreenArea::Kind::Region;
        return ReadRegion(text, area.region);
    }
    if (word == "monitor") {
        area.kind = ScreenArea::Kind::Monitor;
        return TakeNumber(text, "", 0, area.monitor) && text.empty();
    }
    area.kind = ScreenArea::Kind::Window;
    area.name = text;
    return word == "window" && !text.empty();
}

}  // namespace

ScreenArea ParseScreenArea(const std::string& text) {
    ScreenArea area;
    if (!ReadArea(text, area))
        throw platform::Error(platform::kInvalidArgument,
                              fmt::format("\"{}\" is no part of a screen: TESSIVO_SCREEN takes "
                                          "region:WxH+X+Y, monitor:N or window:TITLE",
                                          text));
    return area;
}

bool ParsePointer(const std::string& text) {
    if (text.empty() || text == "on") return true;
    if (text == "off") return false;
    throw platform::Error(
        platform::kInvalidArgument,
        fmt::format("\"{}\" says nothing of the mouse pointer: TESSIVO_POINTER takes on or off",
                    text));
}

ScreenArea AreaOfDevice(const std::string& device_id) {
    if (device_id == "x11") return {};
    if (device_id.size() <= kMonitorDevice.size() || !device_id.starts_with(kMonitorDevice))
        throw platform::Error(
            platform::kInvalidArgument,
            fmt::format("\"{}\" is no X11 screen: choose one that -devices lists", device_id));
    ScreenArea area;
    area.kind = ScreenArea::Kind::Monitor;
    area.name = device_id.substr(kMonitorDevice.size());
    return area;
}

std::string Describe(const ScreenArea& area) {
    switch (area.kind) {
        case ScreenArea::Kind::Region:
            return fmt::format("the region {}x{}+{}+{} of the screen", area.region.width,
                               area.region.height, area.region.x, area.region.y);
        case ScreenArea::Kind::Monitor:
            return area.name.empty() ? fmt::format("monitor {}", area.monitor)
                                     : fmt::format("monitor {}", area.name);
        case ScreenArea::Kind::Window:
            return fmt::format("the window \"{}\"", area.name);
        case ScreenArea::Kind::Screen:
            break;
    }
    return "the screen";
}

ScreenSize SizeNow(const ScreenArea& area) {
    X11Display display;
    const PixelBox box = AreaFinder(display, area).Box();
    return {box.width, box.height};
}

}  // namespace engine
