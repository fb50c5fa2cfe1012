// What broadcast and push are told by the machine's environment, and not by a command.
#pragma once

#include <string>

namespace engine {

struct NetworkSettings {
    std::string broadcast_address;  // to listen at; "" = all of the machine
    std::string push_user;          // "" = none
    std::string push_password;
    std::string push_agent;  // what servers are told of this program; "" = the usual
    bool push_to_any_server = false;
};

}  // namespace engine
