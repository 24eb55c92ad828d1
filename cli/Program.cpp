#include "cli/Program.h"

#include "cli/commands/SharedOptions.h"
#include "cli/output/Output.h"

#include <sstream>

namespace cli {

// Each file of cli/commands adds its commands by one of these functions. A new command is a new file and a
// line here; help shows the commands in this order.
#define LUMO_COMMANDS(ADD)                                                                                   \
    ADD(addDisks)                                                                                            \
    ADD(addTree)                                                                                             \
    ADD(addShow)                                                                                             \
    ADD(addImages)                                                                                           \
    ADD(addSearch)                                                                                           \
    ADD(addGet)                                                                                              \
    ADD(addPut)                                                                                              \
    ADD(addCat)                                                                                              \
    ADD(addSync)                                                                                             \
    ADD(addVersions)                                                                                         \
    ADD(addLinks)                                                                                            \
    ADD(addMkdir)                                                                                            \
    ADD(addRegister)                                                                                         \
    ADD(addComments)                                                                                         \
    ADD(addAnalyze)                                                                                          \
    ADD(addCopies)                                                                                           \
    ADD(addMetadata)                                                                                         \
    ADD(addLookups)

#define DECLARE(name) void name(CommandSet& commands);
LUMO_COMMANDS(DECLARE)
#undef DECLARE

namespace {

constexpr const char* kFooter = R"( "/" means all disks.

Each option can also be set in the environment (LUMO_CENTRE, LUMO_TOKEN_FILE, ...)
and in the profile file (a line such as "centre = localhost:7400"). The command
line takes precedence over the environment, the environment over the profile.

Examples:
  lumo --centre localhost:7400 --user ada --company C-1 disks
  lumo ls /earth/imagery
  lumo tree disk:1 --depth 2
  lumo show file:33 --json
  lumo images north/DEM --csv
  lumo search --sensor GF1 --from 2024-01-01 --bounds 85,27.5,87,29
  lumo show sat 7
  lumo put survey.tif notes /earth/imagery
  lumo get /earth/imagery /earth/outlines downloads

Exit codes: 0 success, 1 any other failure, 2 wrong use, 3 centre not reached,
4 token refused, 5 unknown company, 6 unknown user, 7 place or record not found,
8 the centre failed the request or the time limit passed, 9 something did not
arrive, was not registered, did not pass or was not copied, 130 or 143 interrupted
while files moved or records were registered)";

/// What is wrong with what was typed, where CLI11's own words are hard to read.
std::string textOf(const CLI::ParseError& error)
{
    std::string text = error.what();
    const std::size_t colon = text.find(": ");
    // "--timeout: 1 required TEXT missing"
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && colon != std::string::npos)
        return text.substr(0, colon) +
               (text.find(" missing") != std::string::npos ? " needs a value" : " is given more than once");
    // "--keep excludes --overwrite"
    const std::size_t excludes = text.find(" excludes ");
    if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr && excludes != std::string::npos)
        return text.substr(0, excludes) + " contradicts " + text.substr(excludes + 10);
    // "Could not convert: --json = maybe"
    const std::size_t sign = text.find(" = ");
    if (dynamic_cast<const CLI::ConversionError*>(&error) != nullptr && sign > colon)
        return text.substr(colon + 2, sign - colon - 2) + ": '" + text.substr(sign + 3) +
               "' is neither true nor false";
    return text;
}

std::string commandList(const CLI::App& app)
{
    std::string list;
    const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
    for (const CLI::App* const command : commands) {
        if (!list.empty())
            list += command == commands.back() ? " and " : ", ";
        list += command->get_name();
    }
    return list;
}

} // namespace

Program::Program() : m_App("lumo: the catalogues of a geospatial data centre, and its files", "lumo")
{
    m_App.set_version_flag("--version", "lumo " LUMO_VERSION, "Print the version and exit");
    m_App.set_help_flag("-h,--help", "Print this help and exit");
    m_App.get_formatter()->label("SUBCOMMAND", "COMMAND");
    m_App.get_formatter()->label("Positionals", "Arguments");
    m_App.require_subcommand(1);
    m_App.footer(std::string(kPlaceHelp) + kFooter);
    m_App.get_formatter()->column_width(24);
    addOptions(m_App, m_Options);
    CommandSet commands(m_App, m_Given);
#define CALL(name) name(commands);
    LUMO_COMMANDS(CALL)
#undef CALL
}

Failure Program::wrongUse(const CLI::ParseError& error) const
{
    const CLI::App* command = &m_App;
    std::string typed = "lumo";
    for (auto chosen = m_App.get_subcommands(); !chosen.empty(); chosen = command->get_subcommands()) {
        command = chosen.front();
        typed += " " + command->get_name();
    }
    const bool group = !command->get_subcommands([](const CLI::App*) { return true; }).empty();
    const auto extras = m_App.remaining(true);
    std::string message = textOf(error);
    if (!extras.empty() && extras.front().rfind('-', 0) == 0) {
        const std::string& name = extras.front();
        const bool late = command->get_option_no_throw(name) != nullptr;
        message = late ? name + " belongs after the command: " + typed + " " + name
                       : "there is no option '" + name + "'";
    } else if (!extras.empty() && !group) {
        message = "'" + extras.front() + "' is one argument too many";
    } else if (group && (!extras.empty() || dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)) {
        message = extras.empty() ? "which command?" : "there is no command '" + extras.front() + "';";
        message += " the commands are " + commandList(*command);
    }
    return {ExitCode::WrongUse, message + " (see '" + typed + " --help')"};
}

std::shared_ptr<Command> Program::parse(int argc, const char* const* argv)
{
    try {
        m_App.parse(argc, argv);
    } catch (const CLI::Success& answer) {
        std::ostringstream text;
        m_App.exit(answer, text, text);
        print(text.str());
        return {};
    } catch (const CLI::ParseError& error) {
        throw wrongUse(error);
    }
    applyProfile(m_App, m_Options);
    m_Given->check(m_Options);
    finishOptions(m_Options);
    return m_Given;
}

} // namespace cli
