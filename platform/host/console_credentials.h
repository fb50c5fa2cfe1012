// Asks on a terminal who somebody is.
#pragma once

#include "platform/credentials.h"
#include "platform/host/console_loop.h"

namespace platform::host {

/// User name and password, which is not shown as it is typed. Nothing where the input is no
/// terminal, and when its end or an empty name is typed. Runs the loop.
CredentialsAnswer AskOnTerminal(ConsoleLoop& loop, int input, const CredentialsQuestion& question);

}  // namespace platform::host
