// Whose sound a recording of the screen takes.
#include "engine/sources/sound_choice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/sources/device_list.h"
#include "support/error_of.h"

namespace engine {
namespace {

const PulseFacts kDesktop = {{{"in.usb", "Headset", ""},
                              {"in.pci", "Built-in", ""},
                              {"boxes.monitor", "Monitor of Boxes", "boxes"},
                              {"hdmi.monitor", "Monitor of HDMI", "hdmi"}},
                             "in.usb",
                             "hdmi"};
const PulseFacts kWithoutMicrophone = {
    {{"hdmi.monitor", "Monitor of HDMI", "hdmi"}}, "hdmi.monitor", "hdmi"};

struct ChoiceCase {
    const char* choice;
    DeviceFacts facts;
    const char* device;  // id, what is mixed with it, name; or what the error says
};

TEST(SoundChoice, FindsTheDevices) {
    const DeviceFacts cards{.captures = {{"PCH", "HDA Intel PCH", 0, "ALC257"}}};
    const ChoiceCase cases[] = {
        {"", {.pulse = kDesktop}, "in.usb||Headset"},
        {"", {.pulse = kWithoutMicrophone}, "hdmi.monitor||Monitor of HDMI"},
        {"", {}, "sound server"},
        {"Microphone", {.pulse = kDesktop}, "in.usb||Headset"},
        {"microphone", {.pulse = kWithoutMicrophone}, "no microphone"},
        {"microphone", cards, "default||Default ALSA device"},
        {"desktop", {.pulse = kDesktop}, "hdmi.monitor||Monitor of HDMI"},
        {"desktop", cards, "PulseAudio or PipeWire"},
        {"BOTH", {.pulse = kDesktop}, "in.usb|hdmi.monitor|Headset and Monitor of HDMI"},
        {"both", {.pulse = kWithoutMicrophone}, "no microphone"},
        {"1", {.pulse = kDesktop}, "in.pci||Built-in"},
        {"4", {.pulse = kDesktop}, "no audio device 4"},
        {"-1", {.pulse = kDesktop}, "nobody's sound"},
        {"18446744073709551616", {.pulse = kDesktop}, "nobody's sound"},
        {"mic", {.pulse = kDesktop}, "microphone, desktop, both"},
    };
    for (const ChoiceCase& c : cases) {
        SCOPED_TRACE(std::string(c.choice) + " -> " + c.device);
        std::string found;
        const platform::Error error = test_support::ErrorOf([&] {
            const Device device = ChosenSound(MakeDeviceList(c.facts), c.choice);
            found = device.id + "|" + device.mixed_id + "|" + device.name;
        });
        EXPECT_THAT(found.empty() ? error.description() : found, testing::HasSubstr(c.device));
    }
}

}  // namespace
}  // namespace engine
