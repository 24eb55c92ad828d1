#include "centre/program/Commands.h"
#include "centre/program/ServiceManager.h"

#include "centre/base/Text.h"
#include "centre/box/Box.h"
#include "centre/endpoint/FaultyService.h"
#include "centre/store/Schema.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/wirecall/LockChecks.h"

#include <atomic>
#include <csignal>
#include <functional>
#include <iostream>
#include <sys/resource.h>
#include <unistd.h>

namespace centre {

namespace {

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

void printBox(const std::string& code, const std::string& address)
{
    std::cout << "lumo-centre: box " << code << " on " << address << std::endl;
}

void printHttp(const std::string& url)
{
    if (!url.empty())
        std::cout << "lumo-centre: HTTP on " << url << std::endl;
}

void printMetrics(const Observation& observation)
{
    if (const std::string address = observation.metricsAddress(); !address.empty())
        std::cout << "lumo-centre: metrics on " << address << std::endl;
}

void printFaults(const std::vector<FaultCount>& counts)
{
    for (const FaultCount& count : counts)
        std::cout << "lumo-centre: fault " << count.text << " fired " << counted(count.fired, "time") << "\n";
}

/// Ends the process when another one serves one of its boxes.
class Displacement
{
public:
    std::function<void()> report()
    {
        return [this] {
            m_Happened = true;
            ::kill(::getpid(), SIGTERM);
        };
    }
    ExitCode exitCode() const { return m_Happened ? ExitCode::InUse : ExitCode::Success; }

private:
    std::atomic<bool> m_Happened{false};
};

/// CODE or CODE=HOST:PORT.
BoxPlace parseBox(const std::string& text)
{
    const std::size_t separator = text.rfind('=');
    if (separator == std::string::npos)
        return {text, ""};
    return {text.substr(0, separator), text.substr(separator + 1)};
}

ExitCode serve(const Arguments& arguments)
{
    const ServiceSignals signals;
    raiseDescriptorLimit();
    bulkhaul::keepFreedMemory();
    wirecall::endDeadlockSearch();
    Observation observation(arguments.observe);
    Displacement displacement;
    ServeOptions options = arguments.serve;
    options.observer = observation.observer();
    options.displaced = displacement.report();
    if (!options.replica.empty() && !(isServer(arguments.data) && isServer(options.replica)))
        throw Error(ExitCode::WrongUse,
                    "--database-read must be postgresql://..., and so must the catalogue");
    for (const std::string& box : arguments.boxes)
        options.boxes.push_back(parseBox(box));
    Centre centre(arguments.data, options);
    for (const BoxPlace& box : centre.boxes())
        printBox(box.code, box.address);
    for (const std::string& root : centre.copyRoots())
        std::cout << "lumo-centre: copies from and to " << escaped(root) << "\n";
    std::cout << "lumo-centre: serving " << shownPlace(arguments.data) << " on " << centre.address()
              << std::endl;
    printHttp(centre.httpUrl());
    printMetrics(observation);
    const auto reload = [&] {
        observation.reopen();
        centre.reloadCertificate();
    };
    runService(signals, reload, [&] { centre.stop(); });
    printFaults(centre.faultCounts());
    return displacement.exitCode();
}

ExitCode serveBox(const Arguments& arguments)
{
    const ServiceSignals signals;
    raiseDescriptorLimit();
    bulkhaul::keepFreedMemory();
    wirecall::endDeadlockSearch();
    Observation observation(arguments.observe);
    Displacement displacement;
    Faults faults;
    addFaults(faults, arguments.serve.faults, Box::services());
    ListenOptions listen = arguments.serve;
    listen.address = arguments.boxAddress;
    listen.observer = observation.observer();
    listen.displaced = displacement.report();
    Box box(arguments.data, arguments.boxCode, listen, faults);
    printBox(box.code(), box.address());
    printHttp(box.httpUrl());
    printMetrics(observation);
    const auto reload = [&] {
        observation.reopen();
        box.reloadCertificate();
    };
    runService(signals, reload, [&] { box.stop(); });
    printFaults(faults.counts());
    return displacement.exitCode();
}

void addHttp(CLI::App* command, Arguments& arguments)
{
    CLI::Option* http =
        command->add_option("--http", arguments.serve.http, "Serve HTTP as well, at this address")
            ->type_name("HOST:PORT");
    command
        ->add_option("--http-url", arguments.serve.httpUrl,
                     "Where clients reach it, if not at that address: https://HOST[:PORT]")
        ->needs(http)
        ->type_name("URL");
}

void addListening(CLI::App* command, Arguments& arguments)
{
    addHttp(command, arguments);
    CLI::Option* certificate =
        command->add_option("--tls-cert", arguments.serve.tlsCertificate, "The certificate, a PEM file")
            ->type_name("FILE");
    CLI::Option* key =
        command->add_option("--tls-key", arguments.serve.tlsKey, "The certificate's key, a PEM file")
            ->type_name("FILE");
    certificate->needs(key);
    key->needs(certificate);
    command
        ->add_flag("--plain-text", arguments.serve.plainText,
                   "Serve other machines without TLS: everyone on the network may read it")
        ->excludes(certificate);
    command
        ->add_option_function<double>(
            "--grace",
            [&arguments](double seconds) {
                arguments.serve.graceMilliseconds = static_cast<int>(seconds * 1000);
            },
            "The seconds that running calls have to end after SIGTERM; without it 2")
        ->check(CLI::Range(0.0, 3600.0))
        ->type_name("SECONDS");
    command
        ->add_option(
            "--connections", arguments.serve.databaseConnections,
            "Connections to a server's database at once, of the centre and of each box; without it 16")
        ->check(CLI::Range(1, 10000))
        ->type_name("NUMBER");
    const auto addLimit = [command](const char* name, int& limit, const char* description) {
        command->add_option(name, limit, description)->check(CLI::Range(0, 1000000))->type_name("NUMBER");
    };
    addLimit("--max-connections", arguments.serve.connections,
             "Connections to an address at once; 0, without it, is half of what the descriptors allow");
    addLimit("--max-connections-per-client", arguments.serve.connectionsOfAddress,
             "The same from one client's address; 0 is any number; without it 500");
    addLimit("--max-calls-per-user", arguments.serve.callsOfUser,
             "Calls of one user to an address at once; 0 is any number; without it 500");
    addLimit(
        "--max-running-per-user", arguments.serve.methodsOfUser,
        "Calls of one user that run at once, the others wait; 0, without it, is four for each processor");
    command
        ->add_option("--fault", arguments.serve.faults,
                     "A fault for tests: OPERATION[@N]=stall|exit|refuse|result:R|corrupt or"
                     " OPERATION=break:BYTES; may be repeated")
        ->type_name("FAULT")
        ->take_all();
}

void addObserving(CLI::App* command, Arguments& arguments)
{
    using Format = CallLog::Format;
    command
        ->add_option(
            "--metrics", arguments.observe.metrics,
            "Serve metrics for Prometheus at this address, to anyone; a port alone is one of loopback")
        ->type_name("[HOST:]PORT");
    CLI::Option* log = command
                           ->add_option_function<std::string>(
                               "--log",
                               [&arguments](const std::string& format) {
                                   arguments.observe.log.format =
                                       format == "json" ? Format::Json : Format::Text;
                               },
                               "Log each call, as text or json")
                           ->check(CLI::IsMember({"text", "json"}))
                           ->type_name("FORMAT");
    command
        ->add_option("--log-file", arguments.observe.log.file,
                     "The file of the log, opened again at SIGHUP; without it standard error")
        ->needs(log)
        ->type_name("FILE");
    command
        ->add_option_function<std::string>(
            "--log-level",
            [&arguments](const std::string& level) {
                arguments.observe.log.least = level == "error"     ? Severity::Error
                                              : level == "warning" ? Severity::Warning
                                                                   : Severity::Info;
            },
            "The calls to log: info, without it, is all, warning those that failed, error those that failed "
            "by"
            " the centre's fault")
        ->check(CLI::IsMember({"info", "warning", "error"}))
        ->needs(log)
        ->type_name("LEVEL");
}

} // namespace

void addServing(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each =
        command(app, arguments, result, "serve", "Serve a data folder until SIGTERM or SIGINT", serve);
    each->add_option("--listen", arguments.serve.address,
                     "The address to listen on; port 0 takes a free port")
        ->type_name("HOST:PORT")
        ->required();
    each->add_option("--box", arguments.boxes,
                     "A storage box to serve as well, at its last address if none is given; may be repeated")
        ->type_name("CODE[=HOST:PORT]")
        ->take_all();
    each->add_option("--database-read", arguments.serve.replica,
                     "A replica of the database that answers reads; while it can't, the database does")
        ->type_name("URL");
    each->add_option("--copy-root", arguments.serve.copyRoots,
                     "A folder of this machine that users may copy files from and to; may be repeated")
        ->type_name("DIR")
        ->take_all();
    addListening(each, arguments);
    addObserving(each, arguments);

    each =
        command(app, arguments, result, "serve-box", "Serve a storage box until SIGTERM or SIGINT", serveBox);
    each->add_option("CODE", arguments.boxCode, "The box's code")->type_name("")->required();
    CLI::Option* listen =
        each->add_option("--listen", arguments.boxAddress,
                         "The address to listen on, without it the last one; port 0 takes a free port")
            ->type_name("HOST:PORT");
    each->add_option("--announce", arguments.serve.announced,
                     "Where clients reach the box, if not at the address that it listens on")
        ->needs(listen)
        ->type_name("HOST:PORT");
    addListening(each, arguments);
    addObserving(each, arguments);
}

} // namespace centre
