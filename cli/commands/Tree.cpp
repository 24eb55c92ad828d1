#include "cli/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

#include <limits>

namespace cli {

namespace {

/// Walks down from a place, one query for the folders and one for the files of each folder.
class Walk
{
public:
    Walk(Catalogue& catalogue, unsigned int depth) : m_Catalogue(catalogue), m_Depth(depth) {}

    void print(const Found& start);
    Json json(const Found& start);

private:
    /// Whether the contents of a folder at this level below the start are shown.
    bool enters(unsigned int level) const;
    void printBelow(unsigned int folderID, const std::string& prefix, unsigned int level);
    void printDisks(const std::vector<Disk>& disks);
    void addBelow(Json& record, unsigned int folderID, unsigned int level);
    Json diskJson(const Disk& disk, unsigned int level);
    std::string counts() const;

    Catalogue& m_Catalogue;
    unsigned int m_Depth;
    std::size_t m_Folders = 0;
    std::size_t m_Files = 0;
};

const char* branch(bool last)
{
    return last ? "└── " : "├── ";
}

const char* trunk(bool last)
{
    return last ? "    " : "│   ";
}

void printLine(const std::string& prefix, bool last, const Text& name, const std::string& tag)
{
    std::string line = prefix;
    line += branch(last);
    line += escaped(shownName(name));
    line += tag;
    line += '\n';
    print(line);
}

std::string counted(std::size_t count, const char* what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

bool Walk::enters(unsigned int level) const
{
    if (level >= kDeepest && level < m_Depth) {
        throw Failure(ExitCode::CentreFailed, "folders are nested more than " + std::to_string(kDeepest) +
                                                  " deep: begin further down, or limit the tree by --depth");
    }
    return level < m_Depth;
}

void Walk::printBelow(unsigned int folderID, const std::string& prefix, unsigned int level)
{
    if (!enters(level))
        return;
    const std::vector<Folder> folders = m_Catalogue.foldersIn(folderID);
    const std::vector<File> files = m_Catalogue.filesIn(folderID);
    m_Folders += folders.size();
    m_Files += files.size();
    for (const Folder& folder : folders) {
        const bool last = files.empty() && &folder == &folders.back();
        printLine(prefix, last, folder.folderName,
                  folder.folderName ? "/" : "  " + identifierText("folder", folder.folderID));
        printBelow(folder.folderID, prefix + trunk(last), level + 1);
    }
    for (const File& file : files) {
        printLine(prefix, &file == &files.back(), file.fileName,
                  file.fileName ? "" : "  " + identifierText("file", file.fileID));
    }
}

void Walk::printDisks(const std::vector<Disk>& disks)
{
    if (!enters(0))
        return;
    for (const Disk& disk : disks) {
        const bool last = &disk == &disks.back();
        printLine("", last, disk.diskName, disk.diskName ? "/" : "  " + identifierText("disk", disk.diskID));
        if (enters(1))
            printBelow(m_Catalogue.topFolder(disk), trunk(last), 1);
    }
}

std::string Walk::counts() const
{
    return counted(m_Folders, "folder") + ", " + counted(m_Files, "file") + "\n";
}

void Walk::print(const Found& start)
{
    switch (start.kind) {
    case Place::Kind::Path: {
        const std::vector<Disk> disks = m_Catalogue.disks();
        cli::print("/\n");
        printDisks(disks);
        cli::print("\n" + counted(disks.size(), "disk") + ", " + counts());
        break;
    }
    case Place::Kind::Disk:
        cli::print(escaped(shownName(start.disk.diskName)) + "/\n");
        printBelow(m_Catalogue.topFolder(start.disk), "", 0);
        cli::print("\n" + counts());
        break;
    case Place::Kind::Folder:
        cli::print(escaped(shownName(start.folder.folderName)) + "/\n");
        printBelow(start.folder.folderID, "", 0);
        cli::print("\n" + counts());
        break;
    case Place::Kind::File:
        cli::print(escaped(shownName(start.file.fileName)) + "\n");
        break;
    }
}

void Walk::addBelow(Json& record, unsigned int folderID, unsigned int level)
{
    if (!enters(level))
        return;
    Json folders = Json::array();
    for (const Folder& folder : m_Catalogue.foldersIn(folderID)) {
        Json below = listedJson(folder);
        addBelow(below, folder.folderID, level + 1);
        folders.push_back(std::move(below));
    }
    record["folders"] = std::move(folders);
    record["files"] = listedJson(m_Catalogue.filesIn(folderID));
}

Json Walk::diskJson(const Disk& disk, unsigned int level)
{
    Json record = listedJson(disk);
    if (enters(level))
        addBelow(record, m_Catalogue.topFolder(disk), level);
    return record;
}

Json Walk::json(const Found& start)
{
    switch (start.kind) {
    case Place::Kind::Path: {
        Json disks = Json::array();
        for (const Disk& disk : m_Catalogue.disks())
            disks.push_back(diskJson(disk, 1));
        return disks;
    }
    case Place::Kind::Disk:
        return diskJson(start.disk, 0);
    case Place::Kind::Folder: {
        Json record = listedJson(start.folder);
        addBelow(record, start.folder.folderID, 0);
        return record;
    }
    default:
        return listedJson(start.file);
    }
}

class TreeCommand : public Command
{
public:
    explicit TreeCommand(CLI::App& app)
    {
        addArgument(app, "PLACE", m_Typed, "A path, or an identifier with its kind");
        app.add_option("--depth", m_Depth, "Levels to show")->option_text("N")->check(wholeNumber);
        explain(app, std::string(kPlaceHelp) + " \"/\" means all disks.");
    }

    void check(Options& /*options*/) override { m_Place = parsePlace(m_Typed); }

    void run(Session& session) override
    {
        Walk walk(session.catalogue, m_Depth);
        const Found start = session.catalogue.find(m_Place);
        if (session.json)
            print(jsonText(walk.json(start)));
        else
            walk.print(start);
    }

private:
    std::string m_Typed;
    unsigned int m_Depth = std::numeric_limits<unsigned int>::max();
    Place m_Place;
};

} // namespace

void addTree(CommandSet& commands)
{
    commands.add<TreeCommand>("tree", "Show everything below a place");
}

} // namespace cli
