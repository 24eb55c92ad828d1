#include "cli/Program.h"

#include "cli/HelpText.h"
#include "cli/ImageCatalogue.h"
#include "cli/Output.h"

#include <sstream>

namespace cli {

namespace {

constexpr const char* kFooter = R"( "/" stands for all disks.

Each option can also be set in the environment (LUMO_CENTRE, LUMO_TOKEN_FILE, ...)
and in the profile file (a line such as "centre = localhost:7400"). The command
line goes before the environment, the environment before the profile.

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

std::string wholeNumber(const std::string& text)
{
    const bool digits =
        !text.empty() && text.size() <= 10 && text.find_first_not_of("0123456789") == std::string::npos;
    return digits && std::stoull(text) <= std::numeric_limits<unsigned int>::max()
               ? std::string()
               : "'" + text + "' is no whole number";
}

std::string positiveNumber(const std::string& text)
{
    const std::string problem = wholeNumber(text);
    const bool zero = problem.empty() && std::stoull(text) == 0;
    return zero ? "'" + text + "' is none: write a number from 1" : problem;
}

std::string someName(const std::string& text)
{
    return text.empty() ? "'' is no name of a folder" : "";
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
    m_App.set_version_flag("--version", "lumo " LUMO_VERSION);
    m_App.require_subcommand(1);
    m_App.footer(std::string(kPlaceHelp) + kFooter);
    m_App.get_formatter()->column_width(24);
    addOptions(m_App, m_Options);
    addBrowsing();
    addShow();
    addImages();
    addTransfers();
    addLinks();
    addRegister();
    addComments();
    addMarks();
    addAnalysis();
    addCopies();
    addMetadata();
    addLookups();
}

CLI::App* Program::addTo(CLI::App* parent, const char* name, const char* description)
{
    CLI::App* const command = parent->add_subcommand(name, description)->fallthrough();
    command->footer(kCommandFooter);
    return command;
}

CLI::App* Program::addBelow(CLI::App* parent, const char* name, const char* description,
                            const Prepare& prepare)
{
    CLI::App* const command = addTo(parent, name, description);
    command->callback([this, prepare] { m_Prepare = prepare; });
    return command;
}

CLI::App* Program::add(const char* name, const char* description, const Prepare& prepare)
{
    return addBelow(&m_App, name, description, prepare);
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
}

void Program::addShow()
{
    CLI::App* const command = add("show", "Show all fields of one record", [this]() -> Action {
        if (!m_Name.empty())
            return showRecordOfKind(m_Place, m_Name, recordOptions());
        if (m_Csv)
            refuse("--csv is for records of the image catalogue, as in: lumo show sat 7 --csv");
        if (isKind(m_Place))
            refuse("which " + m_Place + "? write its identifier too: lumo show " + m_Place + " ID");
        return [place = parsePlace(m_Place)](Session& session) { showRecord(session, place); };
    });
    command->add_option("PLACE", m_Place, "A place, or the KIND of a record of the image catalogue")
        ->option_text(" ")
        ->required();
    command->add_option("ID", m_Name, "The record's identifier, behind a KIND")->option_text(" ");
    addCsv(command);
    command->footer(std::string(kPlaceHelp) + "\n\n" + kKindHelp +
                    "\nID is its number, for a project also its name, for a type also PROJECT/TYPENAME.\n\n" +
                    kCommandFooter);
}

RecordOptions Program::recordOptions()
{
    // Only there the library tells codes from their texts.
    if (m_Options.codePage.empty())
        m_Options.codePage = "gbk";
    const Form otherwise = m_Options.json ? Form::AsJson : Form::AsTable;
    return {m_Csv ? Form::AsCsv : otherwise, m_Limit};
}

void Program::addCsv(CLI::App* command)
{
    command->add_flag("--csv", m_Csv, "All fields as CSV with a header line; goes before --json")
        ->option_text(" ");
}

CLI::App* Program::addListing(const char* name, const char* description, const Prepare& prepare)
{
    CLI::App* const command = add(name, description, prepare);
    addCsv(command);
    command
        ->add_option(
            "--limit", m_Limit,
            "How many records to show in total (default: all); the centre sends all of them in any case")
        ->option_text("N")
        ->check(positiveNumber);
    return command;
}

void Program::addImages()
{
    const auto takes = [this](CLI::App* command, const char* name, const char* description) {
        command->add_option(name, m_Name, description)->option_text(" ")->required();
    };
    addListing("projects", "List the data projects of your company",
               [this] { return listProjects(recordOptions()); });
    takes(addListing("types", "List the types of a project",
                     [this] { return listTypes(m_Name, recordOptions()); }),
          "PROJECT", "A project's identifier or name");
    CLI::App* const images =
        addListing("images", "List the images, products or control files of a type or a project", [this] {
            if (m_Kind.empty() && !m_Mark.empty()) {
                throw Failure(
                    ExitCode::WrongUse,
                    "--mark takes a project and --kind, as in: lumo images north --kind sat --mark 1");
            }
            return m_Kind.empty() ? listImages(m_Name, recordOptions())
                                  : listImagesOfProject(m_Name, m_Kind, m_Mark, recordOptions());
        });
    takes(images, "TYPE", "A type's identifier, or PROJECT/TYPENAME as in north/DEM; with --kind a PROJECT");
    images->add_option("--kind", m_Kind, "All records of this kind in the project")->option_text("KIND");
    images->add_option("--mark", m_Mark, "Of those the ones that bear this mark, its identifier")
        ->option_text("MARK");
    addSearch();
    takes(addListing("points", "List the points of a control file",
                     [this] { return listPoints(m_Name, recordOptions()); }),
          "CONTROL", "A control file's identifier");
}

void Program::addSearch()
{
    CLI::App* const command = addListing("search", "Find images, products and control points by conditions",
                                         [this] { return searchImages(m_Search, recordOptions()); });
    const auto condition = [command](const char* name, std::string& value, const char* text,
                                     const char* description) {
        command->add_option(name, value, description)->option_text(text);
    };
    condition("--project", m_Search.project, "PROJECT", "In this project: its identifier or its name");
    condition("--type", m_Search.type, "TYPENAME", "In types of this name");
    condition("--sensor", m_Search.sensor, "NAME", "Made by this sensor");
    condition("--from", m_Search.from, "DATE", "Not before this day: 2024-07-31, 20240731, 2024/07/31");
    condition("--to", m_Search.to, "DATE", "Not after this day");
    condition("--bounds", m_Search.bounds, "WEST,SOUTH,EAST,NORTH", "Touching these bounds, in degrees");
    condition("--mark", m_Search.mark, "MARK", "Bearing this mark, its identifier");
    command->footer(std::string("What is found fits all conditions that are given.\n\n") + kCommandFooter);
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
    get->add_option("--to", m_Folder, "The local folder; all arguments are places then")
        ->option_text("DIR")
        ->check(someName);
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
                if (m_Program.empty() == m_Module.empty())
                    refuse("versions takes either --program NO or --module NO, and a VERSION or none");
                const Product product = m_Module.empty() ? Product{Product::Kind::Program, m_Program}
                                                         : Product{Product::Kind::Module, m_Module};
                return [product, version = m_Package.version](Session& session) {
                    showVersion(session, product, version);
                };
            });
    versions->add_option("--program", m_Program, "The program's number")->option_text("NO");
    versions->add_option("--module", m_Module, "The module's number")->option_text("NO");
    versions->add_option("VERSION", m_Package.version, "The version's number")->option_text(" ");
    add("whoami", "Show who you are to the centre, and your company", [] { return Action(showCaller); });
    add("boxes", "List the storage boxes of your company", [] { return Action(listBoxes); });
    CLI::App* const areas =
        add("areas", "List the national areas that the centre gives for an area",
            [this]() -> Action { return [id = m_AreaID](Session& session) { listAreas(session, id); }; });
    areas->add_option("ID", m_AreaID, "The area's identifier")
        ->option_text(" ")
        ->check(wholeNumber)
        ->required();
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
    std::string message = error.what();
    if (!extras.empty() && extras.front().rfind('-', 0) == 0) {
        message = "there is no option '" + extras.front() + "'";
    } else if (!extras.empty() && !group) {
        message = "'" + extras.front() + "' is one argument too many";
    } else if (group && (!extras.empty() || dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)) {
        message = extras.empty() ? "which command?" : "there is no command '" + extras.front() + "';";
        message += " the commands are " + commandList(*command);
    }
    return {ExitCode::WrongUse, message + " (see '" + typed + " --help')"};
}

Action Program::parse(int argc, const char* const* argv)
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
    return m_Prepare();
}

} // namespace cli
