// The numbered list that is made of what the system says.
#include "engine/sources/device_list.h"

#include <linux/videodev2.h>

namespace engine {
namespace {

using platform::SourceType;

constexpr std::uint32_t kCamera = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
constexpr std::uint32_t kWhole = kCamera | V4L2_CAP_META_CAPTURE | V4L2_CAP_DEVICE_CAPS;

struct ListCase {
    const char* why;
    DeviceFacts facts;
    std::vector<std::string> lines;  // id, name, what it is
};

PulseFacts Server(std::vector<PulseSource> sources, std::string source, std::string sink) {
    return {std::move(sources), std::move(source), std::move(sink)};
}

std::vector<ListCase> ListCases() {
    const PulseSource kUsb{"in.usb", "Headset", ""};
    const PulseSource kPci{"in.pci", "Built-in", ""};
    const PulseSource kHdmi{"hdmi.monitor", "Monitor of HDMI", "hdmi"};
    const PulseSource kBoxes{"boxes.monitor", "Monitor of Boxes", "boxes"};
    const AlsaCapture kCard{"PCH", "HDA Intel PCH", 0, "ALC257"};
    return {
        {"nothing there", {}, {}},
        {"the default, then inputs and monitors by id, whatever the server's order",
         {.pulse = Server({kHdmi, kUsb, kBoxes, kPci}, "in.usb", "hdmi")},
         {"in.usb|Headset|default", "in.pci|Built-in|", "hdmi.monitor|Monitor of HDMI|monitor",
          "boxes.monitor|Monitor of Boxes|monitor"}},
        {"a monitor that was made the default leads",
         {.pulse = Server({kPci, kHdmi, kBoxes}, "hdmi.monitor", "boxes")},
         {"hdmi.monitor|Monitor of HDMI|default monitor", "in.pci|Built-in|",
          "boxes.monitor|Monitor of Boxes|monitor"}},
        {"a default that is not among the sources leaves the first input",
         {.pulse = Server({kHdmi, kUsb}, "gone", "gone")},
         {"in.usb|Headset|default", "hdmi.monitor|Monitor of HDMI|monitor"}},
        {"a server without sources is an answer, ALSA is behind it",
         {.pulse = PulseFacts(), .captures = {kCard}},
         {}},
        {"no server: ALSA's default and the cards in their order",
         {.captures = {kCard, {"Cam", "C920", 0, "USB Audio"}, {"Cam", "C920", 1, "USB Audio"}}},
         {"default|Default ALSA device|default", "hw:CARD=PCH,DEV=0|HDA Intel PCH, ALC257|",
          "hw:CARD=Cam,DEV=0|C920, USB Audio (hw:CARD=Cam,DEV=0)|",
          "hw:CARD=Cam,DEV=1|C920, USB Audio (hw:CARD=Cam,DEV=1)|"}},
        {"same descriptions, and one that looks like what tells them apart",
         {.pulse = Server({{"a", "Mic", ""}, {"b", "Mic", ""}, {"c", "Mic (b)", ""}}, "c", "")},
         {"c|Mic (b)|default", "a|Mic (a)|", "b|Mic (b) (b)|"}},
        {"no description, one of several lines, and the name that means any default",
         {.pulse =
              Server({{"a", "", ""}, {"b", " Two\nlines\t", ""}, {"c", "Default_Audio_Device", ""}},
                     "a", "")},
         {"a|a|default", "b|Two lines|", "c|Default_Audio_Device (c)|"}},
        {"nodes for metadata, for output and of memory-to-memory codecs are no cameras",
         {.nodes = {{"/dev/video0", "Cam", kWhole, kCamera | V4L2_CAP_DEVICE_CAPS},
                    {"/dev/video1", "Cam", kWhole, V4L2_CAP_META_CAPTURE},
                    {"/dev/video2", "Codec", V4L2_CAP_VIDEO_M2M | V4L2_CAP_DEVICE_CAPS,
                     V4L2_CAP_VIDEO_M2M},
                    {"/dev/video3", "Out", V4L2_CAP_VIDEO_OUTPUT, 0}}},
         {"/dev/video0|Cam|default"}},
        {"an old driver has no capabilities of the node",
         {.nodes = {{"/dev/video0", "Tuner", kCamera, 0}}},
         {"/dev/video0|Tuner|default"}},
        {"two cameras of a kind, then the screen and its monitors",
         {.nodes = {{"/dev/video0", "Cam", kCamera, 0}, {"/dev/video10", "Cam", kCamera, 0}},
          .screens = {ScreenAccess::X11, {"DP-1", "HDMI-1"}}},
         {"/dev/video0|Cam (/dev/video0)|default", "/dev/video10|Cam (/dev/video10)|",
          "x11|Screen|", "x11:monitor:DP-1|Screen, monitor DP-1|",
          "x11:monitor:HDMI-1|Screen, monitor HDMI-1|"}},
        {"a single monitor is the screen",
         {.screens = {ScreenAccess::X11, {"DP-1"}}},
         {"x11|Screen|default"}},
        {"a portal chooses the monitor itself",
         {.screens = {ScreenAccess::Portal, {}}},
         {"portal|Screen|default"}},
        {"a medium has its own default, and its own names",
         {.pulse = Server({{"in.usb", "C920", ""}}, "in.usb", ""),
          .nodes = {{"/dev/video0", "C920", kCamera, 0}}},
         {"in.usb|C920|default", "/dev/video0|C920|default"}},
    };
}

std::string Line(const Device& device) {
    std::string line = device.id + "|" + device.name + "|";
    if (device.is_default) line += device.is_monitor ? "default monitor" : "default";
    if (device.is_monitor && !device.is_default) line += "monitor";
    return line;
}

TEST(DeviceList, NumbersAndNamesFollowTheFacts) {
    for (const ListCase& each : ListCases()) {
        SCOPED_TRACE(each.why);
        const DeviceList list = MakeDeviceList(each.facts);
        std::vector<std::string> lines;
        for (const Device& device : list) {
            lines.push_back(Line(device));
            EXPECT_EQ(FindDevice(list, MediumOf(device.kind), device.name), &device);
        }
        EXPECT_EQ(lines, each.lines);
    }
}

TEST(DeviceList, NamesAreLookedForInTheirMediumOnly) {
    DeviceFacts facts;
    facts.pulse = Server({{"a", "Mic", ""}, {"b", "Headset", ""}}, "b", "");
    facts.screens.access = ScreenAccess::X11;
    const DeviceList list = MakeDeviceList(facts);
    const Device* any_default = FindDevice(list, SourceType::Audio, kDefaultAudioDevice);
    ASSERT_NE(any_default, nullptr);
    EXPECT_EQ(any_default->id, "b");
    EXPECT_EQ(FindDevice(list, SourceType::Video, "Mic"), nullptr);
    EXPECT_EQ(FindDevice(list, SourceType::Video, kDefaultAudioDevice), nullptr);
    for (const auto& [name, id] : {std::pair("Mic", "a"), {"mic", "a"}, {"head", "b"}}) {
        const Device* const found = FindDevice(list, SourceType::Audio, name);
        ASSERT_NE(found, nullptr) << name;
        EXPECT_EQ(found->id, id) << name;
    }
    EXPECT_EQ(FindDevice(list, SourceType::Audio, "Microphone"), nullptr);
    EXPECT_EQ(FindDevice(list, SourceType::Audio, ""), nullptr);
    EXPECT_EQ(FindDevice({}, SourceType::Audio, kDefaultAudioDevice), nullptr);
}

}  // namespace
}  // namespace engine
