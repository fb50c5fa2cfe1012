// Who somebody is to a server that wants to know it.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace platform {

/// Never shown and never written down.
struct Credentials {
    std::string user;  // "" = none are known
    std::string password;
};

struct CredentialsQuestion {
    std::string server;    // with its publishing point, for people
    bool refused = false;  // what was answered before
    /// False once nobody waits for the answer any more.
    std::function<bool()> wanted = [] { return true; };
};

/// Nothing where nobody is there to answer, or does not want to.
using CredentialsAnswer = std::optional<Credentials>;

}  // namespace platform
