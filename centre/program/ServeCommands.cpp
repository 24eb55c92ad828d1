#include "centre/program/Commands.h"

#include "centre/base/Text.h"
#include "centre/box/Box.h"
#include "centre/endpoint/FaultyService.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"

#include <csignal>
#include <iostream>
#include <pthread.h>
#include <sys/resource.h>

namespace centre {

namespace {

/// SIGTERM and SIGINT, blocked before any thread starts, so that only `wait` sees the first. A second one
/// ends the process at once.
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
        pthread_sigmask(SIG_UNBLOCK, &m_Signals, nullptr);
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

void tellFaults(const std::vector<FaultCount>& counts)
{
    for (const FaultCount& count : counts)
        std::cout << "lumo-centre: fault " << count.text << " fired " << count.fired << " times\n";
}

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
    const StopSignals stopSignals;
    raiseDescriptorLimit();
    bulkhaul::keepFreedMemory();
    ServeOptions options = arguments.serve;
    for (const std::string& box : arguments.boxes)
        options.boxes.push_back(parseBox(box));
    Centre centre(arguments.data, options);
    for (const BoxPlace& box : centre.boxes())
        tellBox(box.code, box.address);
    for (const std::string& root : centre.copyRoots())
        std::cout << "lumo-centre: copies from and to " << escaped(root) << "\n";
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
    Faults faults;
    addFaults(faults, arguments.serve.faults, Box::services());
    ListenOptions listen = arguments.serve;
    listen.address = arguments.boxAddress;
    Box box(arguments.data, arguments.boxCode, listen, faults);
    tellBox(box.code(), box.address());
    stopSignals.wait();
    box.stop();
    tellFaults(faults.counts());
    return ExitCode::Success;
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

} // namespace

void addServing(CLI::App& app, Arguments& arguments, ExitCode& result)
{
    CLI::App* each =
        command(app, arguments, result, "serve", "serve a data folder until SIGTERM or SIGINT", serve);
    each->add_option("--listen", arguments.serve.address, "HOST:PORT; port 0 takes a free one")->required();
    each->add_option("--box", arguments.boxes,
                     "CODE[=HOST:PORT]: a storage box to serve as well; may be given again")
        ->take_all();
    each->add_option("--copy-root", arguments.serve.copyRoots,
                     "a folder that users may have files copied from and to; may be given again")
        ->take_all();
    addListening(each, arguments);

    each =
        command(app, arguments, result, "serve-box", "serve a storage box until SIGTERM or SIGINT", serveBox);
    each->add_option("CODE", arguments.boxCode, "its code")->required();
    each->add_option("--listen", arguments.boxAddress,
                     "HOST:PORT; port 0 takes a free one; otherwise where it was last");
    addListening(each, arguments);
}

} // namespace centre
