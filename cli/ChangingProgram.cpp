#include "cli/Program.h"

#include "cli/HelpText.h"
#include "cli/ImageCatalogue.h"

namespace cli {

// The commands that change the catalogues, and those that ask for what they put there.

namespace {

void takes(CLI::App* command, const char* name, std::string& value, const char* description)
{
    command->add_option(name, value, description)->option_text(" ")->required();
}

void takes(CLI::App* command, const char* name, std::vector<std::string>& values, const char* description)
{
    command->add_option(name, values, description)->option_text(" ")->required();
}

void explain(CLI::App* command, const std::string& text)
{
    command->footer(text + "\n\n" + kCommandFooter);
}

std::string kindHelp(CommentTable table)
{
    return table == CommentTable::Marks ? "KIND is one of " + kindWords(true) + "."
                                        : std::string(kKindHelp) + "\nIt can be disk, folder or file, too.";
}

} // namespace

void Program::addLinks()
{
    constexpr const char* kProject = "A project's identifier or name";
    constexpr const char* kPlace = "A disk, a folder or a file";
    CLI::App* const link = add("link", "Link a project and a folder or file",
                               [this] { return linkPlace(m_Name, m_Place, true); });
    CLI::App* const unlink =
        add("unlink", "Take such a link away", [this] { return linkPlace(m_Name, m_Place, false); });
    for (CLI::App* const command : {link, unlink}) {
        takes(command, "PROJECT", m_Name, kProject);
        takes(command, "PLACE", m_Place, kPlace);
        explain(command, std::string(kPlaceHelp) + " A disk is its top folder.");
    }
    CLI::App* const project = add("project", "Show the project that a folder or file is linked to",
                                  [this] { return showProjectOf(m_Place, recordOptions()); });
    takes(project, "PLACE", m_Place, kPlace);
    addCsv(project);
    explain(project, kPlaceHelp);

    CLI::App* const folder = add("mkdir", "Make a folder", [this] { return makeFolder(m_Place, m_Parents); });
    takes(folder, "PLACE", m_Place, "The new folder's path");
    folder
        ->add_flag("--parents", m_Parents, "Make the folders on the way to it too; one that is there is fine")
        ->option_text(" ");
}

void Program::addRegister()
{
    CLI::App* const command = add("register", "Register a record, or those of a CSV file", [this] {
        if (m_Folder.empty() == m_Arguments.empty())
            refuse("register takes either KEY=VALUE... or --from FILE");
        return m_Folder.empty() ? registerRecord(m_Kind, m_Arguments) : registerFile(m_Kind, m_Folder);
    });
    takes(command, "KIND", m_Kind, "The kind of the record");
    command
        ->add_option("KEY=VALUE", m_Arguments, "Its fields, as in typeID=2 mainFileID=33 imageName=scene-1")
        ->option_text(" ");
    command
        ->add_option("--from", m_Folder,
                     "Register the records of this CSV file, whose first line has the "
                     "fields' names; - reads standard input")
        ->option_text("FILE");
    explain(command, kKindHelp);
}

CLI::App* Program::addCommentTable(const char* name, const char* description, CommentTable table)
{
    CLI::App* const command = addTo(&m_App, name, description);
    command->require_subcommand(1);
    addBelow(command, "list", "List all", [table] { return listComments(table); });
    takes(addBelow(command, "show", "Show one", [this, table] { return showComment(table, m_Name); }), "ID",
          m_Name, "Its identifier");
    CLI::App* const find = addBelow(command, "find", "Find the identifier of a content and a state",
                                    [this, table] { return findComment(table, m_Content, m_State); });
    takes(find, "CONTENT", m_Content, "The text");
    takes(find, "STATE", m_State, "The text of its state");
    CLI::App* const link = addBelow(command, "link", "Link records to one",
                                    [this, table] { return linkComment(table, m_Arguments, true); });
    takes(link, "KIND ID...", m_Arguments, "Records of a kind, and at last the identifier to link them to");
    explain(link, kindHelp(table));
    return command;
}

void Program::addComments()
{
    CLI::App* const command =
        addCommentTable("comment", "List, add and link comments", CommentTable::Comments);
    CLI::App* const add = addBelow(command, "add", "Add one, and link a record to it", [this] {
        if (m_Kind.empty() != m_Name.empty()) {
            refuse("which " + m_Kind + "? write its identifier too");
        }
        return m_Kind.empty() ? addComment(CommentTable::Comments, m_Content, m_State)
                              : addCommentTo(m_Kind, m_Name, m_Content, m_State);
    });
    takes(add, "CONTENT", m_Content, "The text");
    takes(add, "STATE", m_State, "The text of its state");
    add->add_option("KIND", m_Kind, "The kind of the record to link")->option_text(" ");
    add->add_option("ID", m_Name, "Its identifier")->option_text(" ");
    explain(add, kindHelp(CommentTable::Comments));
    CLI::App* const texts = addBelow(command, "texts", "List every content once, or the states of a content",
                                     [this] { return listCommentTexts(m_Content); });
    texts->add_option("CONTENT", m_Content, "List the states that comments of this content have")
        ->option_text(" ");
    CLI::App* const places =
        addBelow(command, "places", "List the folders and files of a project that are linked to one",
                 [this] { return listCommentedPlaces(m_Name, m_Content); });
    takes(places, "PROJECT", m_Name, "A project's identifier or name");
    takes(places, "ID", m_Content, "The comment's identifier");
}

void Program::addMarks()
{
    CLI::App* const command =
        addCommentTable("mark", "List, add and set the marks of images", CommentTable::Marks);
    CLI::App* const add = addBelow(command, "add", "Add one",
                                   [this] { return addComment(CommentTable::Marks, m_Content, m_State); });
    takes(add, "CONTENT", m_Content, "The text");
    takes(add, "STATE", m_State, "The text of its state");
    CLI::App* const unlink = addBelow(command, "unlink", "Take it away from records", [this] {
        return linkComment(CommentTable::Marks, m_Arguments, false);
    });
    takes(unlink, "KIND ID...", m_Arguments, "Records of a kind, and at last the mark's identifier");
    explain(unlink, kindHelp(CommentTable::Marks));
}

void Program::addAnalysis()
{
    CLI::App* const command = add("analyze", "Have the centre analyse images", [this] {
        m_Analysis.timeout = parseTimeout(m_Options.timeout);
        return analyzeFiles(m_Analysis);
    });
    takes(command, "FILE", m_Analysis.places, "Files of the catalogue, each an image");
    command->add_option("--sensor", m_Analysis.sensor, "The sensor that made them")->option_text("NAME");
    command->add_flag("--note", m_Analysis.note, "Note what is found in the files' records")
        ->option_text(" ");
    explain(command, "FILE is a path such as /disk/folder/file or an identifier such as file:33.\n"
                     "--timeout is the limit for all of them together.");
}

void Program::addCopies()
{
    const auto addCopy = [this](const char* name, const char* description,
                                Action (*copy)(const CopyRequest& request)) {
        CLI::App* const command = add(name, description, [this, copy] {
            m_Copy.timeout = parseTimeout(m_Options.timeout);
            return copy(m_Copy);
        });
        command->add_flag("--overwrite", m_Copy.overwrite, "Replace a file that exists at the target")
            ->option_text(" ");
        explain(command, kPlaceHelp);
        return command;
    };
    CLI::App* const in = addCopy("copy-in", "Have the centre copy a file of its machine to a place", copyIn);
    takes(in, "SRC", m_Copy.source, "The file's path on the centre's machine");
    takes(in, "PLACE", m_Copy.target, "The disk or the folder to copy it to");
    in->add_flag("--parents", m_Copy.parents, "Make the folders of PLACE that are missing")->option_text(" ");
    CLI::App* const out =
        addCopy("copy-out", "Have the centre copy the file of a place to a path of its machine", copyOut);
    takes(out, "PLACE", m_Copy.source, "A file of the catalogue");
    takes(out, "DIST", m_Copy.target, "The folder or the new file on the centre's machine");
}

void Program::addMetadata()
{
    CLI::App* const command = add("metadata", "Show what the metadata file of a scene tells",
                                  [this] { return showSceneMetadata(m_Kind, m_Place); });
    command->add_option("FORMAT", m_Kind, "spot5, spot6, alos or ads")
        ->option_text(" ")
        ->required()
        ->check(CLI::IsMember({"spot5", "spot6", "alos", "ads"}));
    takes(command, "ID", m_Place, "The metadata file: its identifier, or its place");
    explain(command, kPlaceHelp);
}

} // namespace cli
