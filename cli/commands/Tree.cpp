#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace cli {

namespace {

/// More than any real tree is deep; folders that contain each other end the walk here.
constexpr unsigned int kDeepest = 256;
constexpr std::size_t kMostEntries = std::size_t(1) << 24;

const char* branch(bool last)
{
    return last ? "└── " : "├── ";
}

const char* trunk(bool last)
{
    return last ? "    " : "│   ";
}

void printLine(const std::string& prefix, bool last, const lumo::Entry& entry)
{
    const bool folder = entry.kind != lumo::Entry::Kind::File;
    std::string line = prefix;
    line += branch(last);
    line += escaped(shownName(entry.name));
    line += !entry.name ? "  " + identifierText(entry) : folder ? "/" : "";
    line += '\n';
    print(line);
}

std::string counted(std::size_t count, const char* what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// Walks down from a place, one query for the folders and one for the files of each folder.
class Walk
{
public:
    Walk(lumo::Catalogue catalogue, unsigned int depth) : m_Catalogue(std::move(catalogue)), m_Depth(depth) {}

    void print(const lumo::Place& start)
    {
        if (start.isRoot()) {
            const std::vector<lumo::Entry> disks = m_Catalogue.disks();
            cli::print("/\n");
            if (enters(0))
                printFolders(disks, true, "", 0);
            cli::print("\n" + counted(disks.size(), "disk") + ", " + counts());
            return;
        }
        const lumo::Entry entry = m_Catalogue.find(start);
        const bool file = entry.kind == lumo::Entry::Kind::File;
        cli::print(escaped(shownName(entry.name)) + (file ? "\n" : "/\n"));
        if (!file) {
            printBelow(entry, "", 0);
            cli::print("\n" + counts());
        }
    }

    Json json(const lumo::Place& start)
    {
        if (!start.isRoot())
            return entryJson(m_Catalogue.find(start), 0);
        Json disks = Json::array();
        for (const lumo::Entry& disk : m_Catalogue.disks())
            disks.push_back(entryJson(disk, 1));
        return disks;
    }

private:
    /// Whether the contents of a folder at this level below the start are shown.
    bool enters(unsigned int level) const
    {
        if (level >= kDeepest && level < m_Depth) {
            throw Failure(ExitCode::CentreFailed,
                          "folders are nested more than " + std::to_string(kDeepest) +
                              " deep: begin further down, or limit the tree by --depth");
        }
        return level < m_Depth;
    }

    void printFolders(const std::vector<lumo::Entry>& folders, bool nothingFollows, const std::string& prefix,
                      unsigned int level)
    {
        for (const lumo::Entry& folder : folders) {
            const bool last = nothingFollows && &folder == &folders.back();
            printLine(prefix, last, folder);
            printBelow(folder, prefix + trunk(last), level + 1);
        }
    }

    void printBelow(const lumo::Entry& parent, const std::string& prefix, unsigned int level)
    {
        if (!enters(level))
            return;
        const lumo::FolderId folder = m_Catalogue.folderOf(parent);
        const std::vector<lumo::Entry> folders = m_Catalogue.folders(folder);
        const std::vector<lumo::Entry> files = m_Catalogue.files(folder);
        count(folders, files);
        printFolders(folders, files.empty(), prefix, level);
        for (const lumo::Entry& file : files)
            printLine(prefix, &file == &files.back(), file);
    }

    Json entryJson(const lumo::Entry& entry, unsigned int level)
    {
        Json record = listedJson(entry);
        if (entry.kind == lumo::Entry::Kind::File || !enters(level))
            return record;
        const lumo::FolderId folder = m_Catalogue.folderOf(entry);
        const std::vector<lumo::Entry> folders = m_Catalogue.folders(folder);
        const std::vector<lumo::Entry> files = m_Catalogue.files(folder);
        count(folders, files);
        Json list = Json::array();
        for (const lumo::Entry& child : folders)
            list.push_back(entryJson(child, level + 1));
        record["folders"] = std::move(list);
        record["files"] = listedJson(files);
        return record;
    }

    /// Throws when the tree has more entries than any real one, as one without end has.
    void count(const std::vector<lumo::Entry>& folders, const std::vector<lumo::Entry>& files)
    {
        m_Folders += folders.size();
        m_Files += files.size();
        if (m_Folders + m_Files > kMostEntries)
            throw Failure(ExitCode::CentreFailed, "there are more than " + std::to_string(kMostEntries) +
                                                      " files and folders: begin further down");
    }

    std::string counts() const
    {
        return counted(m_Folders, "folder") + ", " + counted(m_Files, "file") + "\n";
    }

    lumo::Catalogue m_Catalogue;
    unsigned int m_Depth;
    std::size_t m_Folders = 0;
    std::size_t m_Files = 0;
};

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
