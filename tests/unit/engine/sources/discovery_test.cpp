// How the backends are asked, and how the object model passes on what they found.
#include "engine/sources/device_discovery.h"

#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

#include "engine/object_model/source_plugins.h"

namespace engine {
namespace {

using namespace std::chrono_literals;
using platform::PluginMediaType;

const AlsaCapture kCapture{"PCH", "HDA Intel PCH", 0, "ALC257"};
const VideoNode kNode{"/dev/video0", "Cam", 1, 0};

enum class Does { Answer, Fail };
using enum Does;

template <typename Facts>
std::function<Facts()> Backend(Does does, Facts facts) {
    return [does, facts] {
        if (does == Fail) throw std::runtime_error("broken");
        return facts;
    };
}

DeviceBackends Backends(Does pulse, Does alsa, Does cameras, Does screens) {
    return {Backend(pulse, std::optional(PulseFacts{{{"mic", "Mic", ""}}, "mic", ""})),
            Backend(alsa, std::vector{kCapture}), Backend(cameras, std::vector{kNode}),
            Backend(screens, ScreenFacts{ScreenAccess::X11, {}})};
}

struct Heard {
    bool pulse, alsa, cameras, screens;
};

void ExpectFacts(const DeviceFacts& facts, const Heard& expected) {
    EXPECT_EQ(facts.pulse.has_value(), expected.pulse);
    EXPECT_EQ(facts.captures.size(), expected.alsa ? 1U : 0U);
    EXPECT_EQ(facts.nodes.size(), expected.cameras ? 1U : 0U);
    EXPECT_EQ(facts.screens.access, expected.screens ? ScreenAccess::X11 : ScreenAccess::None);
}

struct BackendCase {
    const char* why;
    Does pulse, alsa, cameras, screens;
    Heard heard;
};

// clang-format off
const BackendCase kBackendCases[] = {
    // why                            pulse   alsa    cameras screens   heard of each
    {"ALSA is behind the server",     Answer, Answer, Answer, Answer,   {true,  false, true,  true}},
    {"no server: ALSA",               Fail,   Answer, Answer, Answer,   {false, true,  true,  true}},
    {"neither server nor cards",      Fail,   Fail,   Answer, Answer,   {false, false, true,  true}},
    {"broken cameras, sound stays",   Answer, Answer, Fail,   Answer,   {true,  false, false, true}},
    {"no display",                    Answer, Answer, Answer, Fail,     {true,  false, true,  false}},
};
// clang-format on

TEST(DeviceDiscovery, WhatFailsHasNothingToSay) {
    for (const BackendCase& each : kBackendCases) {
        SCOPED_TRACE(each.why);
        const auto backends = Backends(each.pulse, each.alsa, each.cameras, each.screens);
        ExpectFacts(AskBackends(backends, 60s), each.heard);
    }
}

TEST(DeviceDiscovery, AServerThatSaysItIsNotThereLeavesSoundToAlsa) {
    DeviceBackends backends = Backends(Answer, Answer, Answer, Answer);
    backends.pulse = [] { return std::nullopt; };
    ExpectFacts(AskBackends(backends, 60s), {false, true, true, true});
}

TEST(DeviceDiscovery, WhatHangsIsLeftBehind) {
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    DeviceBackends backends = Backends(Answer, Answer, Answer, Answer);
    backends.cameras = [released] {
        released.wait();
        return std::vector{kNode};
    };
    ExpectFacts(AskBackends(backends, 2s), {true, false, false, true});
    release.set_value();
}

TEST(SourcePlugins, DevicesAreAskedForOnceAndWhenNeeded) {
    std::atomic<int> asked{0};
    EngineParts parts;
    parts.devices = [&] {
        ++asked;
        DeviceFacts facts;
        facts.pulse = PulseFacts{{{"mic", "Mic", ""}, {"out.monitor", "Out", "out"}}, "mic", ""};
        facts.nodes = {kNode};
        facts.screens.access = ScreenAccess::X11;
        return MakeDeviceList(facts);
    };
    SourcePlugins plugins(std::make_shared<const EngineParts>(parts));
    EXPECT_EQ(asked, 0);
    {
        std::vector<std::jthread> askers;
        for (int i = 0; i < 4; ++i) askers.emplace_back([&] { EXPECT_EQ(plugins.Count(), 3); });
    }
    EXPECT_EQ(asked, 1);

    const std::vector<std::pair<PluginMediaType, std::vector<std::string>>> expected = {
        {PluginMediaType::Audio, {"Mic", "Out"}},
        {PluginMediaType::Video, {"Cam"}},
        {PluginMediaType::Video, {"Screen"}},
    };
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto plugin = plugins.Item(static_cast<int>(i));
        EXPECT_TRUE(plugin->Resources());
        EXPECT_EQ(plugin->MediaType(), expected[i].first);
        std::vector<std::string> names;
        for (int j = 0; j < plugin->Count(); ++j) names.push_back(plugin->Item(j));
        EXPECT_EQ(names, expected[i].second);
        EXPECT_THROW(plugin->Item(plugin->Count()), platform::Error);
        EXPECT_THROW(plugin->Item(-1), platform::Error);
    }
    EXPECT_THROW(plugins.Item(3), platform::Error);
    EXPECT_THROW(plugins.Item(-1), platform::Error);
    EXPECT_EQ(asked, 1);
}

}  // namespace
}  // namespace engine
