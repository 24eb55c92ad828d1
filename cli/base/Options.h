#ifndef LUMO_CLI_BASE_OPTIONS_H
#define LUMO_CLI_BASE_OPTIONS_H

#include "lumo/client/Session.h"

#include <CLI/CLI.hpp>

#include <string>

namespace cli {

/// How to reach the centre and how to show things: the same for every command.
struct Options
{
    lumo::Session::Settings settings; ///< timeout and codePage are set by finishOptions
    std::string timeout = "10s";
    std::string codePage; ///< empty: the command's own
    std::string log;      ///< a file, or empty
    bool json = false;
    std::string profile;
};

/// Adds the options to the program; each is read from its environment variable too.
void addOptions(CLI::App& app, Options& options);

/// Fills what neither the command line nor the environment set from the profile file: the one named,
/// or ~/.config/lumo/profile.ini where it exists. Throws Failure (WrongUse) about a file that can't be
/// read or that holds what isn't an option.
void applyProfile(CLI::App& app, Options& options);

/// Completes the settings of the session, after the command has chosen its code page. Throws Failure
/// (WrongUse) for an option that is missing or not valid.
void finishOptions(Options& options);

} // namespace cli

#endif
