// What broadcast and push are told by the machine's environment or by the person, and not by a
// command.
#pragma once

#include <functional>
#include <string>

#include "platform/credentials.h"

namespace engine {

using AskCredentials =
    std::function<platform::CredentialsAnswer(const platform::CredentialsQuestion& question)>;

struct NetworkSettings {
    std::string broadcast_address;  // to listen at; "" = all of the machine
    platform::Credentials push_user;
    std::string push_agent;  // what servers are told of this program; "" = the usual
    bool push_to_any_server = false;
    AskCredentials ask_push_user = {};  // where they are not known; may be empty
};

}  // namespace engine
