#include "engine/sources/sound_choice.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "engine/sources/device_list.h"
#include "platform/error.h"
#include "platform/text.h"

namespace engine {
namespace {

DeviceList AudioDevices(const DeviceList& list) {
    DeviceList audio;
    std::copy_if(list.begin(), list.end(), std::back_inserter(audio), [](const Device& device) {
        return MediumOf(device.kind) == platform::SourceType::Audio;
    });
    return audio;
}

Device Default(const DeviceList& list) {
    if (const Device* device = FindDevice(list, platform::SourceType::Audio, kDefaultAudioDevice))
        return *device;
    throw platform::Error(
        platform::kFileNotFound,
        "There is no sound device to record from: start the desktop's sound server or connect "
        "a microphone, or choose a profile without sound");
}

Device First(const DeviceList& audio, bool monitor, const char* missing) {
    const auto found = std::find_if(audio.begin(), audio.end(), [monitor](const Device& device) {
        return device.is_monitor == monitor;
    });
    if (found == audio.end()) throw platform::Error(platform::kFileNotFound, missing);
    return *found;
}

Device Microphone(const DeviceList& audio) {
    return First(audio, false,
                 "There is no microphone to record from: connect one, or let TESSIVO_SOUND be "
                 "desktop");
}

Device Desktop(const DeviceList& audio) {
    return First(audio, true,
                 "What the desktop plays cannot be recorded: this takes the desktop's sound "
                 "server, PulseAudio or PipeWire, and an output");
}

std::optional<std::size_t> Number(const std::string& text) {
    std::size_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc{} || rest != end) return std::nullopt;
    return number;
}

}  // namespace

Device ChosenSound(const DeviceList& list, const std::string& choice) {
    const DeviceList audio = AudioDevices(list);
    const std::string word = platform::LowerCase(choice);
    if (word.empty()) return Default(list);
    if (word == "microphone") return Microphone(audio);
    if (word == "desktop") return Desktop(audio);
    if (word == "both") {
        Device both = Microphone(audio);
        const Device desktop = Desktop(audio);
        both.mixed_id = desktop.id;
        both.name = fmt::format("{} and {}", both.name, desktop.name);
        return both;
    }
    const std::optional<std::size_t> number = Number(word);
    if (!number)
        throw platform::Error(
            platform::kInvalidArgument,
            fmt::format("\"{}\" is nobody's sound: TESSIVO_SOUND takes microphone, desktop, both, "
                        "or the number of an audio device that -devices lists",
                        choice));
    if (*number >= audio.size())
        throw platform::Error(platform::kFileNotFound,
                              fmt::format("There is no audio device {}: let TESSIVO_SOUND be a "
                                          "number that -devices lists",
                                          choice));
    return audio[*number];
}

}  // namespace engine
