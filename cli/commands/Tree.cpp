#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

#include <limits>

namespace cli {

namespace {

/// More than any real tree is deep; folders that contain each other end the walk here.
constexpr unsigned int kDeepest = 1024;

/// Walks down from a place, one query for the folders and one for the files of each folder.
class Walk
{
public:
    Walk(lumo::Catalogue catalogue, unsigned int depth) : m_Catalogue(std::move(catalogue)), m_Depth(depth) {}

    void print(const lumo::Place& start);
    Json json(const lumo::Place& start);

private:
    /// Whether the contents of a folder at this level below the start are shown.
    bool enters(unsigned int level) const;
    void printBelow(lumo::FolderId folder, const std::string& prefix, unsigned int level);
    void printDisks(const std::vector<lumo::Entry>& disks);
    void addBelow(Json& record, lumo::FolderId folder, unsigned int level);
    Json entryJson(const lumo::Entry& entry, unsigned int level);
    std::string counts() const;

    lumo::Catalogue m_Catalogue;
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

void printLine(const std::string& prefix, bool last, const lumo::Entry::Text& name, const std::string& tag)
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

void Walk::printBelow(lumo::FolderId parent, const std::string& prefix, unsigned int level)
{
    if (!enters(level))
        return;
    const std::vector<lumo::Entry> folders = m_Catalogue.folders(parent);
    const std::vector<lumo::Entry> files = m_Catalogue.files(parent);
    m_Folders += folders.size();
    m_Files += files.size();
    for (const lumo::Entry& folder : folders) {
        const bool last = files.empty() && &folder == &folders.back();
        printLine(prefix, last, folder.name, folder.name ? "/" : "  " + identifierText(folder));
        printBelow(folder.folder, prefix + trunk(last), level + 1);
    }
    for (const lumo::Entry& file : files)
        printLine(prefix, &file == &files.back(), file.name, file.name ? "" : "  " + identifierText(file));
}

void Walk::printDisks(const std::vector<lumo::Entry>& disks)
{
    if (!enters(0))
        return;
    for (const lumo::Entry& disk : disks) {
        const bool last = &disk == &disks.back();
        printLine("", last, disk.name, disk.name ? "/" : "  " + identifierText(disk));
        if (enters(1))
            printBelow(m_Catalogue.folderOf(disk), trunk(last), 1);
    }
}

std::string Walk::counts() const
{
    return counted(m_Folders, "folder") + ", " + counted(m_Files, "file") + "\n";
}

void Walk::print(const lumo::Place& start)
{
    if (start.isRoot()) {
        const std::vector<lumo::Entry> disks = m_Catalogue.disks();
        cli::print("/\n");
        printDisks(disks);
        cli::print("\n" + counted(disks.size(), "disk") + ", " + counts());
        return;
    }
    const lumo::Entry entry = m_Catalogue.find(start);
    const bool file = entry.kind == lumo::Entry::Kind::File;
    cli::print(escaped(shownName(entry.name)) + (file ? "\n" : "/\n"));
    if (!file) {
        printBelow(m_Catalogue.folderOf(entry), "", 0);
        cli::print("\n" + counts());
    }
}

void Walk::addBelow(Json& record, lumo::FolderId parent, unsigned int level)
{
    if (!enters(level))
        return;
    Json folders = Json::array();
    for (const lumo::Entry& folder : m_Catalogue.folders(parent)) {
        Json below = listedJson(folder);
        addBelow(below, folder.folder, level + 1);
        folders.push_back(std::move(below));
    }
    record["folders"] = std::move(folders);
    record["files"] = listedJson(m_Catalogue.files(parent));
}

Json Walk::entryJson(const lumo::Entry& entry, unsigned int level)
{
    Json record = listedJson(entry);
    if (entry.kind != lumo::Entry::Kind::File && enters(level))
        addBelow(record, m_Catalogue.folderOf(entry), level);
    return record;
}

Json Walk::json(const lumo::Place& start)
{
    if (!start.isRoot())
        return entryJson(m_Catalogue.find(start), 0);
    Json disks = Json::array();
    for (const lumo::Entry& disk : m_Catalogue.disks())
        disks.push_back(entryJson(disk, 1));
    return disks;
}

class TreeCommand : public Command
{
public:
    explicit TreeCommand(CLI::App& app)
    {
        addArgument(app, "PLACE", m_Typed, "A path, or an identifier with its kind");
        addOption(app, "--depth", m_Depth, "N", "Number of levels to show (default: all)")
            ->check(wholeNumber);
        explain(app, std::string(kPlaceHelp) + " \"/\" means all disks.");
    }

    void check(Options& /*options*/) override { m_Place = lumo::Place(m_Typed); }

    void run(lumo::Session& session, bool json) override
    {
        Walk walk(session.catalogue(), m_Depth);
        if (json)
            print(jsonText(walk.json(m_Place)));
        else
            walk.print(m_Place);
    }

private:
    std::string m_Typed;
    unsigned int m_Depth = std::numeric_limits<unsigned int>::max();
    lumo::Place m_Place = "/";
};

} // namespace

void addTree(CommandSet& commands)
{
    commands.add<TreeCommand>("tree", "Show everything below a place");
}

} // namespace cli
