#ifndef LUMO_CLI_CATALOGUE_H
#define LUMO_CLI_CATALOGUE_H

#include "cli/Journal.h"
#include "cli/Place.h"

#include "lumo/catalog/StorageRecords.h"
#include "lumo/core/LumoDataTypes.h"

#include <QPair>

#include <functional>
#include <optional>
#include <string>
#include <vector>

class CLumoDataMgr;

namespace cli {

constexpr unsigned int kNone = 0xFFFFFFFFU;

/// More than any real tree is deep; a catalogue whose folders contain each other ends here.
constexpr int kDeepest = 1024;

/// UTF-8 text of a record; empty when the record could not hold it, because it was too long.
using Text = std::optional<std::string>;

struct Disk
{
    unsigned int diskID;
    unsigned int refID;
    Text kestaCode;
    Text diskName;
    Text rootPath;
};

struct Folder
{
    unsigned int folderID;
    unsigned int diskID;
    unsigned int parentID;
    Text folderName;
    Text shortText; ///< not told in a listing
    Text longText;  ///< not told in a listing
};

struct File
{
    unsigned int fileID;
    unsigned int parentID;
    Text fileName;
    Text shortText; ///< not told in a listing
    Text longText;  ///< not told in a listing
};

/// What a place turned out to be.
struct Found
{
    Place::Kind kind = Place::Kind::Path; ///< Path: "/", all disks
    Disk disk{};
    Folder folder{};
    File file{};
};

/// As much of a path as there is.
struct FoundPart
{
    Found found;
    std::string names; ///< of the folders that are missing, with '/' between them
};

/// The name of a disk, a folder or a file.
const Text& nameOf(const Found& found);
/// Kind and identifier of a disk, a folder or a file, as the library takes them.
QPair<int, unsigned int> placeOf(const Found& found);

/// The catalogue as the commands see it: UTF-8, and every failure of a call thrown as Failure
/// (CentreFailed) with the reason.
class Catalogue
{
public:
    Catalogue(CLumoDataMgr& manager, Journal& journal);

    /// The record of a place; throws Failure (PlaceNotFound).
    Found find(const Place& place);
    /// The same, but for folders at the end of a path that are not there; its disk must be.
    FoundPart findWithMissing(Place place);

    std::vector<Disk> disks();
    /// Folders, by name.
    std::vector<Folder> foldersIn(unsigned int folderID);
    /// Files, by name.
    std::vector<File> filesIn(unsigned int folderID);
    /// Those of a project that bear a comment.
    std::vector<Folder> foldersWith(unsigned int projectID, unsigned int commentID);
    std::vector<File> filesWith(unsigned int projectID, unsigned int commentID);
    /// The top folder of a disk; throws Failure (PlaceNotFound).
    unsigned int topFolder(const Disk& disk);

    /// The folder that a disk (its top folder) or a folder is.
    unsigned int folderOf(const Found& found);
    /// The disk on which it lies.
    std::optional<Disk> diskOf(const Found& found);

    /// The path of what was found, empty when a name on it is not known.
    Text pathOf(const Found& found);

private:
    std::optional<Disk> disk(unsigned int id);
    std::optional<Disk> disk(const std::string& name);
    std::optional<Folder> folder(unsigned int id);
    std::optional<File> file(unsigned int id);
    std::optional<File> file(unsigned int parentID, const std::string& name);
    unsigned int folderID(unsigned int diskID, unsigned int parentID, const std::string& name);

    /// A listing by name; `own` reads the record of one.
    template <class Row, class Record>
    std::vector<Row> listing(const std::function<ENUM_RET_TYPE(QList<Record>&)>& query, Text Row::*name,
                             unsigned int Row::*id, std::optional<Row> (Catalogue::*own)(unsigned int));
    std::vector<Folder> folders(const std::function<ENUM_RET_TYPE(QList<tagFolderTable>&)>& query);
    std::vector<File> files(const std::function<ENUM_RET_TYPE(QList<tagFileTable>&)>& query);

    Found findPath(const Place& place);
    /// The place of a path of two components or more.
    Found findBelow(const Disk& root, const Place& place);
    /// Throws for a folder that looking it up did not find although the centre has it: the look-up tells an
    /// error of the centre and an unknown name alike.
    void requireUnlisted(unsigned int parentID, const std::string& name, const std::string& path);
    Found findIdentifier(const Place& place);
    Text pathOf(Folder folderOnPath);
    /// Whether there is an answer; throws for a failed call.
    bool answered(ENUM_RET_TYPE result) const;
    [[noreturn]] void fail() const;

    CLumoDataMgr& m_Manager;
    Journal& m_Journal;
};

} // namespace cli

#endif
