#ifndef LUMO_CLI_EXITCODE_H
#define LUMO_CLI_EXITCODE_H

#include <stdexcept>
#include <string>

namespace cli {

/// What the process tells its caller; docs/lumo.md documents them.
enum class ExitCode
{
    Success = 0,
    Other = 1,
    WrongUse = 2,
    CentreNotReached = 3,
    TokenRefused = 4,
    UnknownCompany = 5,
    UnknownUser = 6,
    PlaceNotFound = 7,
    CentreFailed = 8,
    TransferFailed = 9,
    Interrupted = 130, ///< by SIGINT
    Terminated = 143   ///< by SIGTERM
};

/// Ends the command: what to tell the user, and the exit code.
class Failure : public std::runtime_error
{
public:
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), m_Code(code) {}
    ExitCode code() const { return m_Code; }

private:
    ExitCode m_Code;
};

/// Ends the command because of its arguments, or of what they name.
[[noreturn]] inline void refuse(const std::string& message)
{
    throw Failure(ExitCode::WrongUse, message);
}

} // namespace cli

#endif
