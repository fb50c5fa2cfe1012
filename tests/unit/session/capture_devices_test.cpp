#include "session/capture_devices.h"

#include "session_test.h"

namespace {

using platform::SourceType;

struct Plugin {
    bool resources;
    int media_type;
    Lines devices;
};

struct ListingCase {
    const char* why;
    std::vector<Plugin> plugins;
    Lines audio;
    Lines video;
};

// clang-format off
const ListingCase kListingCases[] = {
    {"nothing to capture with", {}, {}, {}},
    {"both kinds of one plug-in", {{true, 3, {"cam", "mic"}}}, {"cam", "mic"}, {"cam", "mic"}},
    {"numbers run on across plug-ins", {{true, 1, {"a", "b"}}, {true, 2, {"v"}}, {true, 1, {"c"}}}, {"a", "b", "c"}, {"v"}},
    {"a later plug-in does not overwrite an earlier match",
     {{true, 2, {"v"}}, {true, 3, {"x", "y"}}, {true, 6, {"z"}}}, {"x", "y"}, {"v", "x", "y", "z"}},
    {"scripts and plug-ins without devices do not count",
     {{true, 4, {"script"}}, {false, 3, {"file"}}, {true, 2, {}}, {true, 6, {"v"}}}, {}, {"v"}},
};
// clang-format on

TEST(CaptureDevices, ListedNumbersSelectTheSameDevices) {
    for (const ListingCase& each : kListingCases) {
        SCOPED_TRACE(each.why);
        Session session;
        for (const Plugin& plugin : each.plugins)
            session.encoder().plugins.items.push_back(
                std::make_shared<test_support::FakePluginInfo>(plugin.resources, plugin.media_type,
                                                               plugin.devices));
        session::CaptureDevices devices(session.state, session.pane);

        Lines listing;
        const auto check = [&](SourceType type, const char* heading, const Lines& names) {
            listing.emplace_back(heading);
            for (std::size_t i = 0; i < names.size(); ++i) {
                listing.push_back("\t" + std::to_string(i) + " : " + names[i]);
                EXPECT_EQ(devices.GetDeviceNameFromIndex(type, static_cast<std::int32_t>(i)),
                          names[i]);
            }
            const auto past_last = static_cast<std::int32_t>(names.size());
            EXPECT_EQ(devices.GetDeviceNameFromIndex(type, past_last), "");
            EXPECT_EQ(devices.GetDeviceNameFromIndex(type, -2), "");
        };
        check(SourceType::Audio, "audio device:", each.audio);
        check(SourceType::Video, "video device:", each.video);
        devices.ListDevices();
        EXPECT_EQ(session.pane.lines, listing);
    }
}

}  // namespace
