// What people give as a server.
#include "engine/outputs/push/push_address.h"

#include "platform/error.h"
#include "support/error_of.h"

namespace {

using engine::push::ParseAddress;
using engine::push::PushAddress;

struct AddressCase {
    const char* server;
    const char* point;
    const char* host_text;
    const char* path;
};

// clang-format off
const AddressCase kAddresses[] = {
    {"media.example",              "live",           "media.example",        "/live"},
    {"media.example:80",           "/live",          "media.example",        "/live"},
    {"HTTP://media.example:8080/", "a b/c?d",        "media.example:8080",   "/a%20b/c%3Fd"},
    {"[2001:db8::1]:8080",         "\xC3\xBC%20",    "[2001:db8::1]:8080",   "/%C3%BC%20"},
    {"192.0.2.1",                  "",               "192.0.2.1",            "/"},
};
// clang-format on

TEST(PushAddress, IsTakenApart) {
    for (const AddressCase& c : kAddresses) {
        const PushAddress address = ParseAddress(c.server, c.point);
        EXPECT_EQ(address.HostText(), c.host_text);
        EXPECT_EQ(address.path, c.path);
    }
    EXPECT_EQ(engine::push::ParseLocation("http://other:81/live/2").path, "/live/2");
}

TEST(PushAddress, RefusesWhatIsNone) {
    for (const char* server : {"", "a b", "media:0", "media:70000", "media:x", "media:", "[::1",
                               "[::1]x", "user:word@media", "media\r\nHost: x"})
        EXPECT_EQ(test_support::ErrorNumber([&] { ParseAddress(server, "live"); }, {"-push"}),
                  platform::kInvalidArgument)
            << server;
}

}  // namespace
