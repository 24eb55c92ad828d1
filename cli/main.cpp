#include "cli/Commands.h"
#include "cli/Connection.h"
#include "cli/DisplayText.h"
#include "cli/ExitCode.h"
#include "cli/Journal.h"
#include "cli/Options.h"
#include "cli/Output.h"

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <limits>

namespace {

using cli::ExitCode;
using cli::Failure;

constexpr const char* kCommandFooter =
    R"(PLACE is a path such as /disk/folder/file, or an identifier with its kind:
disk:1, folder:12, file:33. "/" stands for all disks.

The options of connection and output, which every command takes: lumo --help)";

constexpr const char* kFooter = R"(PLACE is a path such as /disk/folder/file, or an identifier with its kind:
disk:1, folder:12, file:33. "/" stands for all disks.

Each option can also be set in the environment (LUMO_CENTRE, LUMO_TOKEN_FILE, ...)
and in the profile file (a line such as "centre = localhost:7400"). The command
line goes before the environment, the environment before the profile.

Examples:
  lumo --centre localhost:7400 --user ada --company C-1 disks
  lumo ls /earth/imagery
  lumo tree disk:1 --depth 2
  lumo show file:33 --json

Exit codes: 0 success, 1 any other failure, 2 wrong use, 3 centre not reached,
4 token refused, 5 unknown company, 6 unknown user, 7 place not found,
8 the centre failed the request or the time limit passed)";

std::string wholeNumber(const std::string& text)
{
    const bool digits =
        !text.empty() && text.size() < 10 && text.find_first_not_of("0123456789") == std::string::npos;
    return digits ? std::string() : "'" + text + "' is no whole number, as in --depth 2";
}

using Action = std::function<void(cli::Catalogue&, const cli::Place&)>;

/// The command line: options, commands and what they were given.
struct Program
{
    CLI::App app{"lumo: browse the storage catalogue of a geospatial data centre", "lumo"};
    cli::Options options;
    std::string place = "/";
    unsigned int depth = std::numeric_limits<unsigned int>::max();
    Action run;

    Program();
    CLI::App* command(const char* name, const char* description, const Action& action);
};

CLI::App* Program::command(const char* name, const char* description, const Action& action)
{
    CLI::App* const added = app.add_subcommand(name, description)->fallthrough();
    added->footer(kCommandFooter);
    added->callback([this, action] { run = action; });
    return added;
}

Program::Program()
{
    app.set_version_flag("--version", "lumo " LUMO_VERSION);
    app.require_subcommand(1);
    app.footer(kFooter);
    app.get_formatter()->column_width(24);
    cli::addOptions(app, options);
    using cli::Catalogue;
    using cli::Place;
    const auto takesPlace = [this](CLI::App* added, bool required) {
        added->add_option("PLACE", place, "A path or an identifier with its kind")
            ->option_text(" ")
            ->required(required);
    };
    command("disks", "List the disks of your company",
            [this](Catalogue& catalogue, const Place&) { listDisks(catalogue, options.json); });
    takesPlace(command("ls", "List what stands in a disk or folder (without PLACE: the disks)",
                       [this](Catalogue& catalogue, const Place& where) {
                           listPlace(catalogue, where, options.json);
                       }),
               false);
    CLI::App* const tree =
        command("tree", "Show everything below a place", [this](Catalogue& catalogue, const Place& where) {
            showTree(catalogue, where, depth, options.json);
        });
    takesPlace(tree, true);
    tree->add_option("--depth", depth, "Levels to show")->option_text("N")->check(wholeNumber);
    takesPlace(command("show", "Show all fields of one record",
                       [this](Catalogue& catalogue, const Place& where) {
                           showRecord(catalogue, where, options.json);
                       }),
               true);
}

/// Says what was wrong in a command line that does not parse, and what would be right.
Failure wrongUse(const CLI::App& app, const CLI::ParseError& error)
{
    const auto chosen = app.get_subcommands();
    const auto extras = app.remaining(true);
    const std::string help =
        chosen.empty() ? "lumo --help" : "lumo " + chosen.front()->get_name() + " --help";
    std::string message = error.what();
    if (!extras.empty() && extras.front().rfind('-', 0) == 0) {
        message = "there is no option '" + extras.front() + "'";
    } else if (!extras.empty() && !chosen.empty()) {
        message = "'" + extras.front() + "' is one argument too many";
    } else if (chosen.empty() &&
               (!extras.empty() || dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)) {
        message = extras.empty() ? "which command?" : "there is no command '" + extras.front() + "';";
        message += " the commands are disks, ls, tree and show";
    }
    return {ExitCode::WrongUse, message + " (see '" + help + "')"};
}

void execute(int argc, char** argv)
{
    Program program;
    try {
        program.app.parse(argc, argv);
        cli::applyProfile(program.app, program.options);
    } catch (const CLI::Success& answer) {
        program.app.exit(answer);
        cli::flushOutput();
        return;
    } catch (const CLI::ParseError& error) {
        throw wrongUse(program.app, error);
    }
    const cli::Place place = cli::parsePlace(program.place);
    cli::Journal journal(program.options.log);
    const cli::Connection connection(program.options, journal);
    cli::Catalogue catalogue(connection.manager(), journal);
    program.run(catalogue, place);
    cli::flushOutput();
}

int tell(ExitCode code, const std::string& message)
{
    if (!message.empty()) {
        std::cerr << "lumo: " << cli::escaped(message) << "\n";
    }
    return static_cast<int>(code);
}

} // namespace

int main(int argc, char** argv)
{
    // What goes wrong on the wire is told in lumo's own message; the RPC library's lines would stand above
    // it.
    setenv("GRPC_VERBOSITY", "NONE", 0);
    try {
        execute(argc, argv);
        return 0;
    } catch (const Failure& failure) {
        return tell(failure.code(), failure.what());
    } catch (const std::exception& error) {
        return tell(ExitCode::Other, error.what());
    }
}
