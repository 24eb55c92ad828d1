#ifndef LUMO_CLI_BASE_EXITCODE_H
#define LUMO_CLI_BASE_EXITCODE_H

#include "lumo/client/Error.h"

#include <stdexcept>
#include <string>

namespace cli {

/// The exit code of the process; docs/lumo.md documents them.
enum class ExitCode
{
    Success = 0,
    Other = 1,
    WrongUse = 2,
    CentreNotReached = 3,
    TokenRefused = 4,
    UnknownCompany = 5,
    UnknownUser = 6,
    NotFound = 7,
    CentreFailed = 8,
    TransferFailed = 9,
    Interrupted = 130, ///< by SIGINT
    Terminated = 143   ///< by SIGTERM
};

/// Ends the command with a message for the user and an exit code. An empty message prints nothing.
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

/// The exit code of an error of the client layer that ends the command.
inline ExitCode exitCodeOf(lumo::Error::Kind kind)
{
    using Kind = lumo::Error::Kind;
    switch (kind) {
    case Kind::WrongUse:
        return ExitCode::WrongUse;
    case Kind::NotReached:
        return ExitCode::CentreNotReached;
    case Kind::TokenRefused:
        return ExitCode::TokenRefused;
    case Kind::UnknownCompany:
        return ExitCode::UnknownCompany;
    case Kind::UnknownUser:
        return ExitCode::UnknownUser;
    case Kind::NotFound:
        return ExitCode::NotFound;
    case Kind::NoAnswer:
    case Kind::Refused:
        return ExitCode::CentreFailed;
    default:
        return ExitCode::Other;
    }
}

} // namespace cli

#endif
