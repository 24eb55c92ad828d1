#include "centre/base/Text.h"
#include "centre/program/Commands.h"

#include <csignal>
#include <cstdlib>
#include <iostream>

namespace {

using centre::ExitCode;

/// The result of a command whose output is written; what can't be written fails it.
ExitCode flushed(ExitCode result)
{
    if (std::cout << std::flush)
        return result;
    std::cerr << "lumo-centre: can't write the output\n";
    return ExitCode::Failed;
}

ExitCode tellWrongUse(const CLI::App& app, const CLI::ParseError& error)
{
    const auto chosen = app.get_subcommands();
    const auto extras = app.remaining(true);
    const std::string help =
        chosen.empty() ? "lumo-centre --help" : "lumo-centre " + chosen.front()->get_name() + " --help";
    std::string message = error.what();
    if (!extras.empty() && extras.front().rfind('-', 0) == 0)
        message = "there is no option '" + extras.front() + "'";
    else if (!extras.empty() && !chosen.empty())
        message = "'" + extras.front() + "' is one argument too many";
    else if (chosen.empty())
        message = (extras.empty() ? "which command?" : "there is no command '" + extras.front() + "';") +
                  std::string(" the commands are init, add-company, add-user, add-box, add-area, import,"
                              " add-version, load, sample, serve and serve-box");
    std::cerr << "lumo-centre: " << centre::escaped(message) << " (see '" << help << "')\n";
    return ExitCode::WrongUse;
}

} // namespace

int main(int argc, char** argv)
{
    // What goes wrong is told in lumo-centre's own lines.
    setenv("GRPC_VERBOSITY", "NONE", 0);
    // A reader of the output that has gone must not end a command before its token is shown.
    std::signal(SIGPIPE, SIG_IGN);
    // A file beyond the size limit is a write that fails.
    std::signal(SIGXFSZ, SIG_IGN);
    CLI::App app(
        "A centre to develop against: a catalogue of real folders and files, served from one data folder.",
        "lumo-centre");
    app.require_subcommand(1);
    app.set_version_flag("--version", "lumo-centre " LUMO_VERSION);
    centre::Arguments arguments;
    ExitCode result = ExitCode::Success;
    centre::addAdministration(app, arguments, result);
    centre::addContent(app, arguments, result);
    centre::addServing(app, arguments, result);
    try {
        app.parse(argc, argv);
        return static_cast<int>(flushed(result));
    } catch (const CLI::Success& answer) {
        app.exit(answer);
        return static_cast<int>(flushed(ExitCode::Success));
    } catch (const CLI::ParseError& error) {
        return static_cast<int>(tellWrongUse(app, error));
    } catch (const centre::Error& error) {
        std::cerr << "lumo-centre: " << error.what() << "\n";
        return static_cast<int>(error.code());
    } catch (const std::exception& exception) {
        std::cerr << "lumo-centre: " << exception.what() << "\n";
        return static_cast<int>(ExitCode::Failed);
    }
}
