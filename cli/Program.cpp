#include "cli/Program.h"

namespace cli {

namespace {

constexpr const char* kPlaceHelp =
    R"(PLACE is a path such as /disk/folder/file, or an identifier with its kind:
disk:1, folder:12, file:33.)";

constexpr const char* kCommandFooter =
    "The options of connection and output, which every command takes: lumo --help";

constexpr const char* kFooter = R"( "/" stands for all disks.

Each option can also be set in the environment (LUMO_CENTRE, LUMO_TOKEN_FILE, ...)
and in the profile file (a line such as "centre = localhost:7400"). The command
line goes before the environment, the environment before the profile.

Examples:
  lumo --centre localhost:7400 --user ada --company C-1 disks
  lumo ls /earth/imagery
  lumo tree disk:1 --depth 2
  lumo show file:33 --json
  lumo put survey.tif notes /earth/imagery
  lumo get /earth/imagery /earth/outlines downloads

Exit codes: 0 success, 1 any other failure, 2 wrong use, 3 centre not reached,
4 token refused, 5 unknown company, 6 unknown user, 7 place not found,
8 the centre failed the request or the time limit passed, 9 something did not
arrive, 130 or 143 interrupted)";

std::string wholeNumber(const std::string& text)
{
    const bool digits =
        !text.empty() && text.size() <= 10 && text.find_first_not_of("0123456789") == std::string::npos;
    return digits && std::stoull(text) <= std::numeric_limits<unsigned int>::max()
               ? std::string()
               : "'" + text + "' is no whole number";
}

} // namespace

Program::Program() : m_App("lumo: the storage catalogue of a geospatial data centre, and its files", "lumo")
{
    m_App.set_version_flag("--version", "lumo " LUMO_VERSION);
    m_App.require_subcommand(1);
    m_App.footer(std::string(kPlaceHelp) + kFooter);
    m_App.get_formatter()->column_width(24);
    addOptions(m_App, m_Options);
    addBrowsing();
    addTransfers();
    addLookups();
}

CLI::App* Program::add(const char* name, const char* description, const Prepare& prepare)
{
    CLI::App* const command = m_App.add_subcommand(name, description)->fallthrough();
    command->footer(kCommandFooter);
    command->callback([this, prepare] { m_Prepare = prepare; });
    return command;
}

void Program::addBrowsing()
{
    const auto takesPlace = [this](CLI::App* command, bool required) {
        command->add_option("PLACE", m_Place, "A path or an identifier with its kind")
            ->option_text(" ")
            ->required(required);
        command->footer(std::string(kPlaceHelp) + " \"/\" stands for all disks.\n\n" + kCommandFooter);
    };
    add("disks", "List the disks of your company", [] { return Action(listDisks); });
    takesPlace(add("ls", "List what stands in a disk or folder (without PLACE: the disks)",
                   [this]() -> Action {
                       return [place = parsePlace(m_Place)](Session& session) { listPlace(session, place); };
                   }),
               false);
    CLI::App* const tree = add("tree", "Show everything below a place", [this]() -> Action {
        return [place = parsePlace(m_Place), depth = m_Depth](Session& session) {
            showTree(session, place, depth);
        };
    });
    takesPlace(tree, true);
    tree->add_option("--depth", m_Depth, "Levels to show")->option_text("N")->check(wholeNumber);
    takesPlace(add("show", "Show all fields of one record",
                   [this]() -> Action {
                       return [place = parsePlace(m_Place)](Session& session) { showRecord(session, place); };
                   }),
               true);
}

CLI::App* Program::addMoving(const char* name, const char* description, const Prepare& prepare)
{
    CLI::App* const command = add(name, description, [this, prepare] {
        // Whatever the records are shown in, names of files must survive.
        m_Options.codePage = "utf8";
        return prepare();
    });
    CLI::Option* const overwrite =
        command->add_flag("--overwrite", m_Package.overwrite, "Replace files that exist at the target")
            ->option_text(" ");
    command->add_flag("--keep", m_Keep, "Keep them, as done (the default)")
        ->option_text(" ")
        ->excludes(overwrite);
    return command;
}

void Program::addTransfers()
{
    CLI::App* const get = addMoving("get", "Fetch disks, folders and files into a local folder",
                                    [this] { return getPlaces(m_Arguments, m_Folder, m_Package.overwrite); });
    get->add_option("PLACE", m_Arguments, "What to fetch; the last of several arguments is the local folder")
        ->option_text(" ")
        ->required();
    get->add_option("--to", m_Folder, "The local folder; all arguments are places then")->option_text("DIR");
    get->footer(std::string(kPlaceHelp) +
                " The local folder is made if need be; without\none, files go to the current folder.\n\n" +
                kCommandFooter);

    CLI::App* const put =
        addMoving("put", "Send local files and folders to a disk or a folder of the catalogue",
                  [this] { return putPaths(m_Arguments, m_Package.overwrite); });
    put->add_option("PATH", m_Arguments, "What to send; the last argument is the PLACE to put it in")
        ->option_text(" ")
        ->required();
    put->footer(std::string(kPlaceHelp) + "\n\n" + kCommandFooter);

    addPackage("get-program", "Fetch the package of a version of a program", Product::Kind::Program, "SOFT");
    addPackage("get-module", "Fetch the package of a version of a module", Product::Kind::Module, "APP");
}

void Program::addPackage(const char* name, const char* description, Product::Kind kind, const char* number)
{
    CLI::App* const command = addMoving(name, description, [this, kind] {
        m_Package.product.kind = kind;
        return getPackage(m_Package);
    });
    command->add_option(number, m_Package.product.number, "Its number")->option_text(" ")->required();
    command->add_option("VERSION", m_Package.version, "The version's number")->option_text(" ")->required();
    command->add_option("DIR", m_Package.folder, "The local folder for it (default: the current one)")
        ->option_text(" ");
    command
        ->add_option("--box", m_Package.box,
                     "The storage box that holds it (default: the one that the "
                     "version names, or your company's only one)")
        ->option_text("CODE");
}

void Program::addLookups()
{
    CLI::App* const versions =
        add("versions", "Show a version of a program or a module (without VERSION: the latest)",
            [this]() -> Action {
                if (m_Program.empty() == m_Module.empty()) {
                    throw Failure(ExitCode::WrongUse,
                                  "versions takes either --program NO or --module NO, and a VERSION or none");
                }
                const Product product = m_Module.empty() ? Product{Product::Kind::Program, m_Program}
                                                         : Product{Product::Kind::Module, m_Module};
                return [product, version = m_Package.version](Session& session) {
                    showVersion(session, product, version);
                };
            });
    versions->add_option("--program", m_Program, "The program's number")->option_text("NO");
    versions->add_option("--module", m_Module, "The module's number")->option_text("NO");
    versions->add_option("VERSION", m_Package.version, "The version's number")->option_text(" ");
    add("boxes", "List the storage boxes of your company", [] { return Action(listBoxes); });
    CLI::App* const areas =
        add("areas", "List the national areas that the centre gives for an area",
            [this]() -> Action { return [id = m_AreaID](Session& session) { listAreas(session, id); }; });
    areas->add_option("ID", m_AreaID, "The area's identifier")
        ->option_text(" ")
        ->check(wholeNumber)
        ->required();
}

std::string Program::commandList() const
{
    std::string list;
    const auto commands = m_App.get_subcommands([](const CLI::App*) { return true; });
    for (const CLI::App* const command : commands) {
        if (!list.empty()) {
            list += command == commands.back() ? " and " : ", ";
        }
        list += command->get_name();
    }
    return list;
}

Failure Program::wrongUse(const CLI::ParseError& error) const
{
    const auto chosen = m_App.get_subcommands();
    const auto extras = m_App.remaining(true);
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
        message += " the commands are " + commandList();
    }
    return {ExitCode::WrongUse, message + " (see '" + help + "')"};
}

Action Program::parse(int argc, const char* const* argv)
{
    try {
        m_App.parse(argc, argv);
    } catch (const CLI::Success& answer) {
        m_App.exit(answer);
        return {};
    } catch (const CLI::ParseError& error) {
        throw wrongUse(error);
    }
    applyProfile(m_App, m_Options);
    return m_Prepare();
}

} // namespace cli
