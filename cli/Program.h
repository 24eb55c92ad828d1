#ifndef LUMO_CLI_PROGRAM_H
#define LUMO_CLI_PROGRAM_H

#include "cli/base/ExitCode.h"
#include "cli/base/Options.h"
#include "cli/commands/Command.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cli {

/// The command line: the options that every command takes, and the commands.
class Program
{
public:
    Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Returns the command that the user typed, already checked; none for help and version, which are
    /// printed. Throws Failure (WrongUse) with a message that says what would be right.
    std::shared_ptr<Command> parse(int argc, const char* const* argv);

    /// The options as the command line, the environment and the profile set them.
    const Options& options() const { return m_Options; }

private:
    Failure wrongUse(const CLI::ParseError& error) const;

    CLI::App m_App;
    Options m_Options;
    std::shared_ptr<Command> m_Given;
};

} // namespace cli

#endif
