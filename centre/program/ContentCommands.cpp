#include "centre/program/Commands.h"

#include "centre/base/Text.h"
#include "centre/content/LoadRecords.h"
#include "centre/content/Sample.h"
#include "centre/program/Progress.h"
#include "centre/store/Store.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iostream>

namespace centre {

namespace {

ExitCode addVersion(const Arguments& arguments)
{
    if (arguments.programNo.empty() && arguments.moduleNo.empty())
        throw Error(ExitCode::WrongUse, "give the number of a program or a module, --program or --module");
    Version version = arguments.version;
    version.kind = arguments.moduleNo.empty() ? VersionKind::Program : VersionKind::Module;
    version.number = arguments.programNo + arguments.moduleNo; // one of them is empty
    Store store(arguments.data);
    addVersion(store, version);
    return ExitCode::Success;
}

ExitCode importTree(const Arguments& arguments)
{
    const auto start = std::chrono::steady_clock::now();
    Store store(arguments.data);
    ImportOptions options = arguments.import;
    options.companyNo = arguments.companyNo;
    options.readDigests = arguments.readDigests;
    Progress progress("entry", "entries");
    options.progress = progress.function();
    options.problem = [&progress](const std::string& problem) {
        progress.clear();
        std::cerr << "lumo-centre: not imported: " + problem + "\n";
    };
    const ImportReport report = importTree(store, options);
    progress.clear();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::cout << "imported " << report.rootPath << " as " << (report.diskIsNew ? "new disk " : "disk ")
              << options.diskName << ": " << counted(report.newFolders, "new folder") << ", "
              << report.knownFolders << " known; " << counted(report.newFiles, "new file") << ", "
              << report.knownFiles << " known, " << report.changedFiles
              << " of them changed; left out: " << report.notServed.text() << "; "
              << counted(report.problems, "problem") << "; " << std::fixed << std::setprecision(2)
              << time.count() << " s\n";
    return report.problems == 0 ? ExitCode::Success : ExitCode::Incomplete;
}

/// Calls `add`, which adds records, with a function that shows its progress. Prints the counts and the time.
template <class Add>
ExitCode addRecords(const std::string& done, Add add)
{
    const auto start = std::chrono::steady_clock::now();
    const RecordCounts counts = [&add] {
        Progress progress("record", "records");
        return add(progress.function());
    }();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::cout << done << ": " << countsText(counts) << "; " << std::fixed << std::setprecision(2)
              << time.count() << " s\n";
    return ExitCode::Success;
}

ExitCode load(const Arguments& arguments)
{
    Store store(arguments.data);
    const bool isInput = arguments.recordFile == "-";
    const std::string name = isInput ? "standard input" : escaped(arguments.recordFile);
    std::ifstream file;
    if (!isInput) {
        file.open(arguments.recordFile, std::ios::binary);
        if (!file)
            throw Error(ExitCode::Failed, "can't read " + name + ": " + std::strerror(errno));
    }
    std::istream& lines = isInput ? std::cin : file;
    return addRecords("loaded " + name,
                      [&](const auto& progress) { return loadRecords(store, lines, name, progress); });
}

ExitCode sample(const Arguments& arguments)
{
    Store store(arguments.data);
    return addRecords("made a sample", [&](const auto& progress) {
        return addSample(store, arguments.companyNo, arguments.sampleImages, arguments.sampleSeed, progress);
    });
}

void addRecordCommands(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each =
        command(app, arguments, result, "load", "Add records of the image catalogue from JSON lines", load);
    each->add_option("FILE", arguments.recordFile,
                     "The file, a JSON object on each line; - for standard input")
        ->type_name("")
        ->required();

    each = command(app, arguments, result, "sample", "Add a made-up image catalogue for trials", sample);
    each->add_option("--images", arguments.sampleImages, "How many images and products, up to 100000000")
        ->required()
        ->check(CLI::Range(0, 100000000).description(""))
        ->type_name("N");
    each->add_option("--seed", arguments.sampleSeed, "A number; another seed makes another catalogue")
        ->type_name("N")
        ->capture_default_str();
    each->add_option("--company", arguments.companyNo, "The number of the company that owns the projects")
        ->type_name("NO")
        ->capture_default_str();
}

} // namespace

void addContent(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each = command(app, arguments, result, "import",
                             "Register the content of a real folder as a disk", importTree);
    each->add_option("DIR", arguments.import.folder, "The folder")->type_name("")->required();
    each->add_option("--disk", arguments.import.diskName, "The disk's name; the first import makes the disk")
        ->type_name("NAME")
        ->required();
    each->add_option("--company", arguments.companyNo, "The number of the company that owns the disk")
        ->type_name("NO")
        ->capture_default_str();
    each->add_option("--box", arguments.import.boxCode, "The code of the storage box that holds the disk")
        ->type_name("CODE");
    each->add_flag("--digests", arguments.readDigests,
                   "Read all files and keep their digests, for check --digests");

    each =
        command(app, arguments, result, "add-version", "Add a version of a program or a module", addVersion);
    CLI::Option* program =
        each->add_option("--program", arguments.programNo, "The program's number")->type_name("NO");
    each->add_option("--module", arguments.moduleNo, "The module's number, if it is a version of a module")
        ->type_name("NO")
        ->excludes(program);
    Version& version = arguments.version;
    each->add_option("--version", version.version, "The version number")->type_name("V")->required();
    each->add_option("--path", version.path, "The package, a file or a folder")
        ->type_name("PATH")
        ->required();
    each->add_option("--box", version.boxCode, "The code of the storage box that holds the package")
        ->type_name("CODE")
        ->required();
    each->add_option("--name", version.name, "A name; without it the number of the program or module");
    each->add_option("--date", version.released, "The day of the release; without it today")
        ->type_name("YYYY-MM-DD");
    each->add_option("--notes", version.notes, "The release notes");
    addRecordCommands(app, arguments, result);
}

} // namespace centre
