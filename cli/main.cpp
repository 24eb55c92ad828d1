#include "cli/Connection.h"
#include "cli/Output.h"
#include "cli/Program.h"

#include "lumo/components/bulkhaul/Bulkhaul.h"

#include <csignal>
#include <cstdlib>

namespace {

using cli::ExitCode;

void execute(int argc, char** argv)
{
    cli::Program program;
    const cli::Action action = program.parse(argc, argv);
    if (action) {
        const cli::Options& options = program.options();
        cli::Journal journal(options.log);
        const cli::Connection connection(options, journal);
        cli::Catalogue catalogue(connection.manager(), journal);
        cli::Session session{connection.manager(), catalogue, journal, options.json};
        action(session);
    }
    cli::flushOutput();
}

int tell(ExitCode code, const std::string& message)
{
    if (!message.empty())
        cli::complain(message);
    return static_cast<int>(code);
}

} // namespace

int main(int argc, char** argv)
{
    // What goes wrong on the wire is told in lumo's own message; the RPC library's lines would stand above
    // it.
    setenv("GRPC_VERBOSITY", "NONE", 0);
    static_cast<void>(
        std::signal(SIGXFSZ, SIG_IGN)); // a file that may not grow further is a failure, not the end
    bulkhaul::keepFreedMemory();
    try {
        execute(argc, argv);
        return 0;
    } catch (const cli::Failure& failure) {
        return tell(failure.code(), failure.what());
    } catch (const std::exception& error) {
        return tell(ExitCode::Other, error.what());
    }
}
