#ifndef LUMO_CLI_COMMANDS_LATERANSWER_H
#define LUMO_CLI_COMMANDS_LATERANSWER_H

#include "cli/Session.h"

#include <functional>
#include <string>

namespace cli {

constexpr const char* kNoAnswer = "no answer came in time (see --timeout); the centre may still be at work";

/// Makes `call`, which returns at once, and waits at most `timeout` milliseconds (0: no limit) for the end of
/// the library's function of that name.
LaterAnswer await(Session& session, const char* function, unsigned int timeout,
                  const std::function<void()>& call);

/// An error of such a call for a message.
std::string reasonText(const std::string& error);

} // namespace cli

#endif
