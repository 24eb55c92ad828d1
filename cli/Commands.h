#ifndef LUMO_CLI_COMMANDS_H
#define LUMO_CLI_COMMANDS_H

#include "cli/RecordOutput.h"
#include "cli/Session.h"

#include "lumo/directory/VersionRecords.h"

#include <string>
#include <vector>

namespace cli {

// Browsing the catalogue.

void listDisks(Session& session);
void listPlace(Session& session, const Place& place);
/// Folders and files, as of one place.
struct Listing
{
    std::vector<Folder> folders;
    std::vector<File> files;
};
void printListing(const Session& session, const Listing& listing);
/// `depth` is the number of levels below the place.
void showTree(Session& session, const Place& place, unsigned int depth);
void showRecord(Session& session, const Place& place);

// Browsing the image catalogue. What the user typed is checked first, before there is a connection.

/// How records are shown.
struct RecordOptions
{
    Form form = Form::AsTable;
    unsigned int limit = 0xFFFFFFFF; ///< records in total
};

Action listProjects(const RecordOptions& options);
/// A project is its identifier or its name.
Action listTypes(const std::string& project, const RecordOptions& options);
/// A type is its identifier or PROJECT/TYPENAME.
Action listImages(const std::string& type, const RecordOptions& options);
/// All records of a kind in a project; with `mark` not empty those that bear it, told by its identifier.
Action listImagesOfProject(const std::string& project, const std::string& kind, const std::string& mark,
                           const RecordOptions& options);
/// The points of a control file, which is its identifier.
Action listPoints(const std::string& control, const RecordOptions& options);
/// One record by the word for its kind; a project and a type may be named as above.
Action showRecordOfKind(const std::string& kind, const std::string& id, const RecordOptions& options);

/// As typed; empty texts ask for nothing.
struct SearchRequest
{
    std::string project;
    std::string type;
    std::string sensor;
    std::string from;
    std::string to;
    std::string bounds;
    std::string mark; ///< its identifier
};
Action searchImages(const SearchRequest& request, const RecordOptions& options);

// Asking about the caller, boxes, areas and versions.

void showCaller(Session& session);

/// A program or a module by its number.
struct Product
{
    enum class Kind
    {
        Program,
        Module
    };
    Kind kind = Kind::Program;
    std::string number;
};

/// How a message names a version; the latest one when `version` is empty.
std::string shownVersion(const Product& product, const std::string& version);
/// Throws Failure when there is no such version.
tagVersionInfo versionInfo(Session& session, const Product& product, const std::string& version);
void listBoxes(Session& session);
void listAreas(Session& session, unsigned int areaID);
/// The latest version when `version` is empty.
void showVersion(Session& session, const Product& product, const std::string& version);

// Changing the catalogues. What the user typed is checked first here, too.

/// Prints the identifier of what was made or found.
void printIdentifier(const Session& session, unsigned int id);

/// Links a project and a folder or file, or takes the link away.
Action linkPlace(const std::string& project, const std::string& place, bool link);
Action showProjectOf(const std::string& place, const RecordOptions& options);
/// `parents`: makes the folders on the way to it too, and is content with what is there.
Action makeFolder(const std::string& place, bool parents);

/// `assignments` as typed, KEY=VALUE.
Action registerRecord(const std::string& kind, const std::vector<std::string>& assignments);
/// The records of a CSV file whose header has the fields' names.
Action registerFile(const std::string& kind, const std::string& path);

/// The two tables of comments, which have the same commands but for some.
enum class CommentTable
{
    Comments, ///< of a company, for records of any kind
    Marks     ///< image comments
};

Action listComments(CommentTable table);
Action showComment(CommentTable table, const std::string& id);
Action findComment(CommentTable table, const std::string& content, const std::string& state);
Action addComment(CommentTable table, const std::string& content, const std::string& state);
/// Adds a comment and links a record to it.
Action addCommentTo(const std::string& kind, const std::string& id, const std::string& content,
                    const std::string& state);
/// Links records to a comment, or takes a mark away. `arguments`: KIND ID... COMMENT.
Action linkComment(CommentTable table, const std::vector<std::string>& arguments, bool link);
/// Every content once; with `content` the states that comments of this content have.
Action listCommentTexts(const std::string& content);
/// The folders and files of a project that bear a comment.
Action listCommentedPlaces(const std::string& project, const std::string& comment);

// Having the centre work. Whoever waits for an answer that comes later does so for `timeout` milliseconds, 0
// for no limit.

struct AnalysisRequest
{
    std::vector<std::string> places; ///< of files
    std::string sensor;
    bool note = false; ///< what is found goes into the records of the files
    unsigned int timeout = 0;
};
Action analyzeFiles(const AnalysisRequest& request);

struct CopyRequest
{
    std::string source;
    std::string target;
    bool overwrite = false;
    bool parents = false; ///< makes folders of the catalogue that are missing
    unsigned int timeout = 0;
};
/// A file of the centre's machine to a place.
Action copyIn(const CopyRequest& request);
/// The file of a place to a path of the centre's machine.
Action copyOut(const CopyRequest& request);

/// What the centre reads in the metadata file of a scene; `format` is spot5, spot6, alos or ads, `file` a
/// place or an identifier alone.
Action showSceneMetadata(const std::string& format, const std::string& file);

// Moving files. What the user typed is checked on the local side first, before there is a connection;
// the action that is returned moves the files and throws Failure (TransferFailed) unless all arrived.

/// Places and, with `folder` empty and two or more of them, the local folder as the last one.
Action getPlaces(std::vector<std::string> places, std::string folder, bool overwrite);
/// Local paths, and the place to put them as the last one.
Action putPaths(std::vector<std::string> paths, bool overwrite);

struct PackageRequest
{
    Product product;
    std::string version;
    std::string folder = ".";
    std::string box; ///< its code; empty: the one that the version names, or the only one
    bool overwrite = false;
};
Action getPackage(const PackageRequest& request);

} // namespace cli

#endif
