#include "cli/Program.h"
#include "cli/output/Output.h"

#include "lumo/client/Session.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/wirecall/LockChecks.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>

namespace {

using cli::ExitCode;

/// The file that --log names, which the library's log is appended to.
class LogFile
{
public:
    explicit LogFile(const std::string& path) : m_File(path, std::ios::app)
    {
        if (!m_File)
            cli::refuse("can't write the log file '" + path + "': " + std::strerror(errno));
    }

    /// Appends an entry at once. Complains when that fails for the first time, and writes nothing after that.
    void write(const std::string& entry)
    {
        if (m_File && !(m_File << entry << std::flush))
            cli::complain(std::string("the log is not whole: ") + std::strerror(errno));
    }

private:
    std::ofstream m_File;
};

void execute(int argc, char** argv)
{
    cli::Program program;
    if (const auto command = program.parse(argc, argv)) {
        const cli::Options& options = program.options();
        lumo::Session::Settings settings = options.settings;
        std::optional<LogFile> log;
        if (!options.log.empty()) {
            log.emplace(options.log);
            settings.log = [&log](const std::string& entry) { log->write(entry); };
        }
        lumo::Session session(settings);
        command->run(session, options.json);
    }
    cli::flushOutput();
}

int report(ExitCode code, const std::string& message)
{
    if (!message.empty())
        cli::complain(message);
    return static_cast<int>(code);
}

} // namespace

int main(int argc, char** argv)
{
    // lumo reports what goes wrong on the wire in a message of its own; the RPC library would print its lines
    // above it.
    setenv("GRPC_VERBOSITY", "NONE", 0);
    // A file that reaches the limit of its size is a failed write, not the end of the process.
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    bulkhaul::keepFreedMemory();
    wirecall::endDeadlockSearch();
    try {
        execute(argc, argv);
        return 0;
    } catch (const cli::Failure& failure) {
        return report(failure.code(), failure.what());
    } catch (const lumo::Error& error) {
        return report(cli::exitCodeOf(error.kind()), error.what());
    } catch (const std::exception& error) {
        return report(ExitCode::Other, error.what());
    }
}
