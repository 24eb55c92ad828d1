#include "centre/program/Commands.h"

#include "centre/base/Text.h"
#include "centre/content/LoadRecords.h"
#include "centre/content/Sample.h"
#include "centre/store/Store.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <unistd.h>

namespace centre {

namespace {

ExitCode addVersion(const Arguments& arguments)
{
    Version version = arguments.version;
    version.kind = arguments.moduleNo.empty() ? VersionKind::Program : VersionKind::Module;
    version.number = arguments.programNo + arguments.moduleNo; // one of them alone is given
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
    const ImportReport report = importTree(store, options, [](const std::string& problem) {
        std::cerr << "lumo-centre: not imported, " + problem + "\n";
    });
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::cout << "imported " << report.rootPath << " as " << (report.diskIsNew ? "new disk " : "disk ")
              << options.diskName << ": " << report.newFolders << " folders new, " << report.knownFolders
              << " known; " << report.newFiles << " files new, " << report.knownFiles << " known; "
              << report.skipped << " links or special files skipped; " << report.problems << " problems; "
              << std::fixed << std::setprecision(2) << time.count() << " s\n";
    return report.problems == 0 ? ExitCode::Success : ExitCode::Incomplete;
}

/// How many records there are so far, on a line of a terminal's standard error.
class RecordProgress
{
public:
    ~RecordProgress()
    {
        if (m_Told)
            std::cerr << "\r\033[K" << std::flush;
    }

    void tell(std::uint64_t records)
    {
        const auto now = std::chrono::steady_clock::now();
        if (!m_IsTerminal || now - m_LastTold < std::chrono::milliseconds(200))
            return;
        std::cerr << "\rlumo-centre: " << records << " records" << std::flush;
        m_LastTold = now;
        m_Told = true;
    }

private:
    const bool m_IsTerminal = ::isatty(STDERR_FILENO) != 0;
    std::chrono::steady_clock::time_point m_LastTold = std::chrono::steady_clock::now();
    bool m_Told = false;
};

/// Runs `add`, which adds records and is given what takes their progress, and tells what came of it.
template <class Add>
ExitCode addRecords(const std::string& done, Add add)
{
    const auto start = std::chrono::steady_clock::now();
    const RecordCounts counts = [&add] {
        RecordProgress progress;
        return add([&progress](std::uint64_t records) { progress.tell(records); });
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
        command(app, arguments, result, "load", "add records of the image catalogue from JSON lines", load);
    each->add_option("FILE", arguments.recordFile, "a JSON object on each line; - for standard input")
        ->required();

    each = command(app, arguments, result, "sample", "add a made-up image catalogue for trials", sample);
    each->add_option("--images", arguments.sampleImages, "how many images and products")
        ->required()
        ->check(CLI::Range(0, 100000000));
    each->add_option("--seed", arguments.sampleSeed, "another makes another catalogue")
        ->capture_default_str();
    each->add_option("--company", arguments.companyNo, "whose projects they are")->capture_default_str();
}

} // namespace

void addContent(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each = command(app, arguments, result, "import",
                             "register the content of a real folder as a disk", importTree);
    each->add_option("DIR", arguments.import.folder, "the folder")->required();
    each->add_option("--disk", arguments.import.diskName, "the disk's name")->required();
    each->add_option("--company", arguments.companyNo, "whose disk it is")->capture_default_str();
    each->add_option("--box", arguments.import.boxCode, "code of the storage box that holds the disk");

    each =
        command(app, arguments, result, "add-version", "add a version of a program or a module", addVersion);
    CLI::Option_group* number = each->add_option_group("number");
    number->add_option("--program", arguments.programNo, "the program's number");
    number->add_option("--module", arguments.moduleNo, "the module's number");
    number->require_option(1);
    Version& version = arguments.version;
    each->add_option("--version", version.version, "the version number")->required();
    each->add_option("--path", version.path, "its package, a file or a folder")->required();
    each->add_option("--box", version.boxCode, "code of the storage box that holds it")->required();
    each->add_option("--name", version.name, "a name; otherwise the number of the program or module");
    each->add_option("--date", version.released, "day of the release, YYYY-MM-DD; otherwise today");
    each->add_option("--notes", version.notes, "what there is to say about it");
    addRecordCommands(app, arguments, result);
}

} // namespace centre
