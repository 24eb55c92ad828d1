#ifndef LUMO_CLI_COMMANDS_COMMAND_H
#define LUMO_CLI_COMMANDS_COMMAND_H

#include "cli/base/Options.h"

#include "lumo/client/Session.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace cli {

/// A command of lumo. Its constructor takes the CLI::App of the command and declares the options there; the
/// object holds what the user typed.
class Command
{
public:
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    /// Checks what the user typed, before there is a connection. May change the options that the connection
    /// is made with. Throws Failure (WrongUse).
    virtual void check(Options& /*options*/) {}

    /// Does the work and prints the result to standard output, as JSON or as text. Throws Failure or
    /// lumo::Error.
    virtual void run(lumo::Session& session, bool json) = 0;
};

/// The commands of lumo, or those of one group such as `lumo comment`.
class CommandSet
{
public:
    /// `given` receives the command that the user typed.
    CommandSet(CLI::App& app, std::shared_ptr<Command>& given) : m_App(app), m_Given(given) {}

    /// Adds a command of type `Made`, which is constructed from its CLI::App and `arguments`.
    template <class Made, class... Arguments>
    void add(const char* name, const std::string& description, Arguments... arguments)
    {
        CLI::App& app = declare(name, description);
        app.callback([&given = m_Given, made = std::make_shared<Made>(app, arguments...)] { given = made; });
    }

    /// Adds a command that has commands of its own.
    CommandSet addGroup(const char* name, const char* description);

private:
    CLI::App& declare(const char* name, const std::string& description);

    CLI::App& m_App;
    std::shared_ptr<Command>& m_Given;
};

} // namespace cli

#endif
