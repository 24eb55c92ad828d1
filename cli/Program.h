#ifndef LUMO_CLI_PROGRAM_H
#define LUMO_CLI_PROGRAM_H

#include "cli/Commands.h"
#include "cli/ExitCode.h"
#include "cli/Options.h"

#include <CLI/CLI.hpp>

#include <limits>

namespace cli {

/// The command line: options, commands and what they were given.
class Program
{
public:
    Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// The command that was given; none when it was help or the version, which is printed. Throws Failure
    /// (WrongUse) that says what would be right.
    Action parse(int argc, const char* const* argv);

    /// As the command line, the environment and the profile set them.
    const Options& options() const { return m_Options; }

private:
    /// What becomes the action once options and arguments are read.
    using Prepare = std::function<Action()>;

    CLI::App* add(const char* name, const char* description, const Prepare& prepare);
    static CLI::App* addTo(CLI::App* parent, const char* name, const char* description);
    /// A command below another, as in: lumo comment list.
    CLI::App* addBelow(CLI::App* parent, const char* name, const char* description, const Prepare& prepare);
    /// A command that moves files.
    CLI::App* addMoving(const char* name, const char* description, const Prepare& prepare);
    void addBrowsing();
    void addShow();
    void addImages();
    void addSearch();
    /// A command that lists records of the image catalogue.
    CLI::App* addListing(const char* name, const char* description, const Prepare& prepare);
    void addCsv(CLI::App* command);
    RecordOptions recordOptions();
    void addLookups();
    void addLinks();
    void addRegister();
    void addComments();
    void addMarks();
    void addAnalysis();
    void addCopies();
    void addMetadata();
    /// What comments and marks have in common.
    CLI::App* addCommentTable(const char* name, const char* description, CommentTable table);
    void addTransfers();
    void addPackage(const char* name, const char* description, Product::Kind kind, const char* number);
    Failure wrongUse(const CLI::ParseError& error) const;

    CLI::App m_App;
    Options m_Options;
    Prepare m_Prepare;
    std::string m_Place = "/";
    unsigned int m_Depth = std::numeric_limits<unsigned int>::max();
    unsigned int m_AreaID = 0;
    std::string m_Name;
    std::string m_Kind;
    std::string m_Mark;
    std::string m_Content;
    std::string m_State;
    bool m_Parents = false;
    bool m_Csv = false;
    unsigned int m_Limit = std::numeric_limits<unsigned int>::max();
    SearchRequest m_Search;
    std::vector<std::string> m_Arguments;
    std::string m_Folder;
    AnalysisRequest m_Analysis;
    CopyRequest m_Copy;
    bool m_Keep = false;
    std::string m_Program;
    std::string m_Module;
    PackageRequest m_Package;
};

} // namespace cli

#endif
