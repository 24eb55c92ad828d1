#ifndef LUMO_CLIENT_SETTINGS_H
#define LUMO_CLIENT_SETTINGS_H

#include "lumo/client/Session.h"

#include <string>

namespace lumo::internal {

/// Throws Error (WrongUse) when a session can't be opened with these settings.
void checkSettings(const Session::Settings& settings);

/// The token, or what the file of the token has; throws Error (WrongUse).
std::string tokenOf(const Session::Settings& settings);

} // namespace lumo::internal

#endif
