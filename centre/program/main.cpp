#include "centre/base/Text.h"
#include "centre/program/Commands.h"
#include "centre/program/ConfigFile.h"
#include "centre/store/Schema.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using centre::ExitCode;

/// Writes the output. Returns the command's result, or Failed if the output can't be written.
ExitCode flushed(ExitCode result)
{
    if (std::cout << std::flush)
        return result;
    std::cerr << "lumo-centre: can't write the output\n";
    return ExitCode::Failed;
}

std::string commandNames(const CLI::App& app)
{
    std::string names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names += (names.empty() ? "" : ", ") + command->get_name();
    return names;
}

ExitCode reportWrongUse(const CLI::App& app, const CLI::ParseError& error)
{
    const auto chosen = app.get_subcommands();
    const auto extras = app.remaining(true);
    const std::string help =
        chosen.empty() ? "lumo-centre --help" : "lumo-centre " + chosen.front()->get_name() + " --help";
    std::string message = error.what();
    if (error.get_name() == "ConversionError") // "Could not convert: ID = x"
        message = "not a valid number" + message.substr(message.find(':'));
    if (error.get_name() == "ArgumentMismatch" && message.find(": ") != std::string::npos)
        message =
            message.substr(0, message.find(": ")) + // "--user: 1 required NAME missing"
            (message.find(" missing") != std::string::npos ? " needs a value" : " is given more than once");
    if (!extras.empty() && extras.front().rfind('-', 0) == 0)
        message = "there is no option '" + extras.front() + "'";
    else if (!extras.empty() && !chosen.empty())
        message = "there is one argument too many: '" + extras.front() + "'";
    else if (chosen.empty())
        message = (extras.empty() ? "a command is missing" : "there is no command '" + extras.front() + "'") +
                  "; the commands are " + commandNames(app);
    std::cerr << "lumo-centre: " << centre::escaped(message) << " (see '" << help << "')\n";
    return ExitCode::WrongUse;
}

/// Returns the arguments of a command line with the value of `--database` after the command, where DATA is.
/// As an option of its own it would leave DATA to the argument that follows.
std::vector<std::string> databaseAsData(const CLI::App& app, std::vector<std::string> arguments)
{
    const std::string option = "--database";
    const auto found = std::find_if(arguments.begin(), arguments.end(), [&option](const std::string& each) {
        return each == option || each.rfind(option + "=", 0) == 0;
    });
    if (found == arguments.end())
        return arguments;
    std::string url = found->substr(std::min(option.size() + 1, found->size()));
    const bool isNext = *found == option && found + 1 != arguments.end();
    if (isNext)
        url = *(found + 1);
    if (!centre::isServer(url))
        throw centre::Error(ExitCode::WrongUse, "--database must be postgresql://...");
    arguments.erase(found, found + (isNext ? 2 : 1));
    const auto command = std::find_if(arguments.begin(), arguments.end(), [&app](const std::string& each) {
        return !app.get_subcommands([&each](const CLI::App* known) { return known->get_name() == each; })
                    .empty();
    });
    if (command != arguments.end())
        arguments.insert(command + 1, url);
    return arguments;
}

} // namespace

int main(int argc, char** argv)
{
    // lumo-centre reports failures in lines of its own.
    setenv("GRPC_VERBOSITY", "NONE", 0);
    // A command must show its token even if the reader of its output has gone.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    // A write beyond the limit of a file's size must fail, not end the process.
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    CLI::App app("A geospatial data centre for development and tests: serves a catalogue of real folders and "
                 "files from one data folder.",
                 "lumo-centre");
    app.require_subcommand(1);
    app.set_version_flag("--version", "lumo-centre " LUMO_VERSION, "Print the version and exit");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.get_formatter()->label("Positionals", "Arguments");
    app.get_formatter()->label("REQUIRED", "(required)");
    app.get_formatter()->label("Needs", "with");
    app.get_formatter()->label("Excludes", "not with");
    centre::Arguments arguments;
    ExitCode result = ExitCode::Success;
    centre::addAdministration(app, arguments, result);
    centre::addAccounts(app, arguments, result);
    centre::addContent(app, arguments, result);
    centre::addIngest(app, arguments, result);
    centre::addChecking(app, arguments, result);
    centre::addBackup(app, arguments, result);
    centre::addServing(app, arguments, result);
    centre::ConfigFile::addTo(app);
    app.footer("To begin: lumo-centre init DATA --token-file FILE\n"
               "          lumo-centre serve DATA --listen 127.0.0.1:0\n"
               "Help on a command: lumo-centre COMMAND --help");
    try {
        std::vector<std::string> words = databaseAsData(app, {argv + 1, argv + argc});
        std::reverse(words.begin(), words.end()); // which CLI11 takes from the last to the first
        app.parse(std::move(words));
        return static_cast<int>(flushed(result));
    } catch (const CLI::Success& answer) {
        app.exit(answer);
        return static_cast<int>(flushed(ExitCode::Success));
    } catch (const CLI::ParseError& error) {
        return static_cast<int>(reportWrongUse(app, error));
    } catch (const centre::Error& error) {
        std::cerr << "lumo-centre: " << error.what() << "\n";
        return static_cast<int>(error.code());
    } catch (const std::exception& exception) {
        std::cerr << "lumo-centre: " << exception.what() << "\n";
        return static_cast<int>(ExitCode::Failed);
    }
}
