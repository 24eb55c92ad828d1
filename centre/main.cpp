#include "centre/Box.h"
#include "centre/Centre.h"
#include "centre/Error.h"
#include "centre/FaultyService.h"
#include "centre/Import.h"
#include "centre/Load.h"
#include "centre/Store.h"
#include "centre/Text.h"
#include "centre/Token.h"
#include "centre/Version.h"
#include "components/bulkhaul/Bulkhaul.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <optional>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using centre::ExitCode;

struct Arguments
{
    std::string data;
    std::string companyNo = "LUMO";
    std::string userName = "demo";
    std::string tokenFile;
    bool readOnly = false;
    std::string boxCode;
    std::string boxAddress;
    std::uint32_t areaId = 0;
    std::string areaName;
    std::optional<std::uint32_t> areaParent;
    std::string programNo;
    std::string moduleNo;
    centre::Version version;
    centre::ImportOptions import;
    centre::ServeOptions serve;
    std::vector<std::string> boxes;
    std::string recordFile;
    std::uint32_t sampleImages = 0;
    std::uint64_t sampleSeed = 1;
};

/// Gives a new user's token to whom it concerns. A token that can't be written to its file is shown, since
/// it can't be had again.
ExitCode handOver(const Arguments& arguments, const std::string& token)
{
    if (!arguments.tokenFile.empty()) {
        try {
            centre::writeTokenFile(arguments.tokenFile, token);
            std::cout << "token of user " << arguments.userName << " written to " << arguments.tokenFile
                      << "\n";
            return ExitCode::Success;
        } catch (const centre::Error& error) {
            std::cerr << "lumo-centre: " << error.what() << "; it is shown instead\n";
        }
    }
    const std::string shown = "token of user " + arguments.userName + ", shown only now: " + token + "\n";
    if (!(std::cout << shown << std::flush))
        std::cerr << shown;
    return arguments.tokenFile.empty() ? ExitCode::Success : ExitCode::Failed;
}

ExitCode init(const Arguments& arguments)
{
    const std::string token = centre::Store::create(arguments.data, arguments.companyNo, arguments.userName);
    std::cout << "made " << arguments.data << " with company " << arguments.companyNo << "\n";
    return handOver(arguments, token);
}

ExitCode addUser(const Arguments& arguments)
{
    return handOver(
        arguments,
        centre::Store(arguments.data).addUser(arguments.userName, arguments.companyNo, !arguments.readOnly));
}

ExitCode addCompany(const Arguments& arguments)
{
    centre::Store(arguments.data).addCompany(arguments.companyNo);
    return ExitCode::Success;
}

ExitCode addBox(const Arguments& arguments)
{
    centre::Store(arguments.data).addBox(arguments.boxCode, arguments.boxAddress);
    return ExitCode::Success;
}

ExitCode addArea(const Arguments& arguments)
{
    centre::Store(arguments.data).addArea(arguments.areaId, arguments.areaName, arguments.areaParent);
    return ExitCode::Success;
}

ExitCode addVersion(const Arguments& arguments)
{
    centre::Version version = arguments.version;
    version.kind = arguments.moduleNo.empty() ? centre::VersionKind::Program : centre::VersionKind::Module;
    version.number = arguments.programNo + arguments.moduleNo; // one of them alone is given
    centre::Store store(arguments.data);
    centre::addVersion(store, version);
    return ExitCode::Success;
}

ExitCode importTree(const Arguments& arguments)
{
    const auto start = std::chrono::steady_clock::now();
    centre::Store store(arguments.data);
    centre::ImportOptions options = arguments.import;
    options.companyNo = arguments.companyNo;
    const centre::ImportReport report = centre::importTree(store, options, [](const std::string& problem) {
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
    const centre::RecordCounts counts = [&add] {
        RecordProgress progress;
        return add([&progress](std::uint64_t records) { progress.tell(records); });
    }();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::cout << done << ": " << centre::countsText(counts) << "; " << std::fixed << std::setprecision(2)
              << time.count() << " s\n";
    return ExitCode::Success;
}

ExitCode load(const Arguments& arguments)
{
    centre::Store store(arguments.data);
    const bool isInput = arguments.recordFile == "-";
    const std::string name = isInput ? "standard input" : centre::escaped(arguments.recordFile);
    std::ifstream file;
    if (!isInput) {
        file.open(arguments.recordFile, std::ios::binary);
        if (!file)
            throw centre::Error(ExitCode::Failed, "can't read " + name + ": " + std::strerror(errno));
    }
    std::istream& lines = isInput ? std::cin : file;
    return addRecords("loaded " + name,
                      [&](const auto& progress) { return loadRecords(store, lines, name, progress); });
}

ExitCode sample(const Arguments& arguments)
{
    centre::Store store(arguments.data);
    return addRecords("made a sample", [&](const auto& progress) {
        return addSample(store, arguments.companyNo, arguments.sampleImages, arguments.sampleSeed, progress);
    });
}

/// SIGTERM and SIGINT, blocked before any thread starts, so that only `wait` sees them.
class StopSignals
{
public:
    StopSignals()
    {
        sigemptyset(&m_Signals);
        sigaddset(&m_Signals, SIGTERM);
        sigaddset(&m_Signals, SIGINT);
        pthread_sigmask(SIG_BLOCK, &m_Signals, nullptr);
    }

    void wait() const
    {
        int signal = 0;
        sigwait(&m_Signals, &signal);
    }

private:
    sigset_t m_Signals;
};

/// A box holds descriptors for every upload under way, and the usual limit is low for programs that use
/// select, which nothing here does.
void raiseDescriptorLimit()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

void tellBox(const std::string& code, const std::string& address)
{
    std::cout << "lumo-centre: box " << code << " on " << address << std::endl;
}

void tellFaults(const std::vector<centre::FaultCount>& counts)
{
    for (const centre::FaultCount& count : counts)
        std::cout << "lumo-centre: fault " << count.text << " fired " << count.fired << " times\n";
}

/// CODE or CODE=HOST:PORT.
centre::BoxPlace parseBox(const std::string& text)
{
    const std::size_t separator = text.rfind('=');
    if (separator == std::string::npos)
        return {text, ""};
    return {text.substr(0, separator), text.substr(separator + 1)};
}

ExitCode serve(const Arguments& arguments)
{
    const StopSignals stopSignals;
    raiseDescriptorLimit();
    bulkhaul::keepFreedMemory();
    centre::ServeOptions options = arguments.serve;
    for (const std::string& box : arguments.boxes)
        options.boxes.push_back(parseBox(box));
    centre::Centre centre(arguments.data, options);
    for (const centre::BoxPlace& box : centre.boxes())
        tellBox(box.code, box.address);
    std::cout << "lumo-centre: serving " << arguments.data << " on " << centre.address() << std::endl;
    stopSignals.wait();
    centre.stop();
    tellFaults(centre.faultCounts());
    return ExitCode::Success;
}

ExitCode serveBox(const Arguments& arguments)
{
    const StopSignals stopSignals;
    raiseDescriptorLimit();
    bulkhaul::keepFreedMemory();
    centre::Faults faults;
    centre::addFaults(faults, arguments.serve.faults, centre::Box::services());
    centre::ListenOptions listen = arguments.serve;
    listen.address = arguments.boxAddress;
    centre::Box box(arguments.data, arguments.boxCode, listen, faults);
    tellBox(box.code(), box.address());
    stopSignals.wait();
    box.stop();
    tellFaults(faults.counts());
    return ExitCode::Success;
}

/// A command on a data folder, with the function that runs it.
CLI::App* command(CLI::App& app, Arguments& arguments, ExitCode& result, const std::string& name,
                  const std::string& description, ExitCode (*run)(const Arguments&))
{
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("DATA", arguments.data, "the centre's data folder")->required();
    command->callback([&arguments, &result, run] { result = run(arguments); });
    return command;
}

void addTokenFile(CLI::App* command, Arguments& arguments)
{
    command->add_option("--token-file", arguments.tokenFile,
                        "write the user's token there instead of showing it");
}

void addAdministration(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each =
        command(app, arguments, result, "init", "make a data folder with a company and a user", init);
    each->add_option("--company", arguments.companyNo, "the company's number")->capture_default_str();
    each->add_option("--user", arguments.userName, "the user's name")->capture_default_str();
    addTokenFile(each, arguments);

    each = command(app, arguments, result, "add-company", "add a company", addCompany);
    each->add_option("NO", arguments.companyNo, "its number")->required();

    each = command(app, arguments, result, "add-user", "add a user of a company", addUser);
    each->add_option("NAME", arguments.userName, "the user's name")->required();
    each->add_option("--company", arguments.companyNo, "the company's number")->required();
    each->add_flag("--read-only", arguments.readOnly, "the user may download, not upload");
    addTokenFile(each, arguments);

    each = command(app, arguments, result, "add-box", "add a storage box", addBox);
    each->add_option("CODE", arguments.boxCode, "its code")->required();
    each->add_option("ADDRESS", arguments.boxAddress, "its address, HOST:PORT")->required();

    each = command(app, arguments, result, "add-area", "add a national area", addArea);
    each->add_option("ID", arguments.areaId, "its identifier")->required();
    each->add_option("NAME", arguments.areaName, "its name")->required();
    each->add_option("--parent", arguments.areaParent, "identifier of the area that it is part of");
}

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
    centre::Version& version = arguments.version;
    each->add_option("--version", version.version, "the version number")->required();
    each->add_option("--path", version.path, "its package, a file or a folder")->required();
    each->add_option("--box", version.boxCode, "code of the storage box that holds it")->required();
    each->add_option("--name", version.name, "a name; otherwise the number of the program or module");
    each->add_option("--date", version.released, "day of the release, YYYY-MM-DD; otherwise today");
    each->add_option("--notes", version.notes, "what there is to say about it");
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

void addListening(CLI::App* command, Arguments& arguments)
{
    CLI::Option* certificate =
        command->add_option("--tls-cert", arguments.serve.tlsCertificate, "certificate, PEM file");
    CLI::Option* key = command->add_option("--tls-key", arguments.serve.tlsKey, "its key, PEM file");
    certificate->needs(key);
    key->needs(certificate);
    command->add_flag("--plain-text", arguments.serve.plainText, "plain text beyond this machine, too")
        ->excludes(certificate);
    command
        ->add_option("--fault", arguments.serve.faults,
                     "a fault for tests: OPERATION[@N]=stall|exit|refuse|result:R|corrupt or"
                     " OPERATION=break:BYTES; may be given again")
        ->take_all();
}

void addServing(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each =
        command(app, arguments, result, "serve", "serve a data folder until SIGTERM or SIGINT", serve);
    each->add_option("--listen", arguments.serve.address, "HOST:PORT; port 0 takes a free one")->required();
    each->add_option("--box", arguments.boxes,
                     "CODE[=HOST:PORT]: a storage box to serve as well; may be given again")
        ->take_all();
    addListening(each, arguments);

    each =
        command(app, arguments, result, "serve-box", "serve a storage box until SIGTERM or SIGINT", serveBox);
    each->add_option("CODE", arguments.boxCode, "its code")->required();
    each->add_option("--listen", arguments.boxAddress,
                     "HOST:PORT; port 0 takes a free one; otherwise where it was last");
    addListening(each, arguments);
}

/// The result of a command whose output is written; what can't be written fails it.
ExitCode flushed(ExitCode result)
{
    if (std::cout << std::flush)
        return result;
    std::cerr << "lumo-centre: can't write the output\n";
    return ExitCode::Failed;
}

ExitCode tellWrongUse(const CLI::App& app, const CLI::ParseError& error)
{
    const auto chosen = app.get_subcommands();
    const auto extras = app.remaining(true);
    const std::string help =
        chosen.empty() ? "lumo-centre --help" : "lumo-centre " + chosen.front()->get_name() + " --help";
    std::string message = error.what();
    if (!extras.empty() && extras.front().rfind('-', 0) == 0)
        message = "there is no option '" + extras.front() + "'";
    else if (!extras.empty() && !chosen.empty())
        message = "'" + extras.front() + "' is one argument too many";
    else if (chosen.empty())
        message = (extras.empty() ? "which command?" : "there is no command '" + extras.front() + "';") +
                  std::string(" the commands are init, add-company, add-user, add-box, add-area, import,"
                              " add-version, load, sample, serve and serve-box");
    std::cerr << "lumo-centre: " << centre::escaped(message) << " (see '" << help << "')\n";
    return ExitCode::WrongUse;
}

} // namespace

int main(int argc, char** argv)
{
    // What goes wrong is told in lumo-centre's own lines.
    setenv("GRPC_VERBOSITY", "NONE", 0);
    // A reader of the output that has gone must not end a command before its token is shown.
    std::signal(SIGPIPE, SIG_IGN);
    // A file beyond the size limit is a write that fails.
    std::signal(SIGXFSZ, SIG_IGN);
    CLI::App app(
        "A centre to develop against: a catalogue of real folders and files, served from one data folder.",
        "lumo-centre");
    app.require_subcommand(1);
    app.set_version_flag("--version", "lumo-centre " LUMO_VERSION);
    Arguments arguments;
    ExitCode result = ExitCode::Success;
    addAdministration(app, arguments, result);
    addContent(app, arguments, result);
    addRecordCommands(app, arguments, result);
    addServing(app, arguments, result);
    try {
        app.parse(argc, argv);
        return static_cast<int>(flushed(result));
    } catch (const CLI::Success& answer) {
        app.exit(answer);
        return static_cast<int>(flushed(ExitCode::Success));
    } catch (const CLI::ParseError& error) {
        return static_cast<int>(tellWrongUse(app, error));
    } catch (const centre::Error& error) {
        std::cerr << "lumo-centre: " << error.what() << "\n";
        return static_cast<int>(error.code());
    } catch (const std::exception& exception) {
        std::cerr << "lumo-centre: " << exception.what() << "\n";
        return static_cast<int>(ExitCode::Failed);
    }
}
