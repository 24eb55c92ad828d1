#ifndef LUMO_CLI_OPTIONS_H
#define LUMO_CLI_OPTIONS_H

#include <CLI/CLI.hpp>

#include <string>

namespace cli {

/// How to reach the centre and how to show things: the same for every command.
struct Options
{
    std::string centre;
    std::string tokenFile;
    std::string user;
    std::string company;
    std::string timeout = "10s";
    std::string tlsCa;
    bool tls = false;
    bool plainText = false;
    std::string log;
    std::string codePage; ///< empty: the command's own
    bool json = false;
    std::string profile;
};

/// Adds the options to the program; each is read from its environment variable too.
void addOptions(CLI::App& app, Options& options);

/// Fills what neither the command line nor the environment set from the profile file: the one named,
/// or ~/.config/lumo/profile.ini where it exists. Throws Failure (WrongUse) about a file that can't be
/// read or that holds what isn't an option.
void applyProfile(CLI::App& app, Options& options);

/// A time limit such as "10s", "500ms", "2m" or "0" (no limit) in milliseconds; without a unit it is in
/// milliseconds. Throws Failure (WrongUse).
unsigned int parseTimeout(const std::string& text);

} // namespace cli

#endif
