#ifndef LUMO_CLI_BASE_EXITCODE_H
#define LUMO_CLI_BASE_EXITCODE_H

#include "lumo/client/Error.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>

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

/// Ends the command when some of several failed. Prints nothing about a single one, whose failure was
/// printed.
inline void requireAll(ExitCode code, std::size_t failed, std::size_t all, const std::string& whatFailed)
{
    if (failed > 0)
        throw Failure(code, all == 1
                                ? std::string()
                                : std::to_string(failed) + " of " + std::to_string(all) + " " + whatFailed);
}

/// The exit code of an error of the client layer that ends the command.
inline ExitCode exitCodeOf(lumo::Error::Kind kind)
{
    using Kind = lumo::Error::Kind;
    static constexpr std::pair<Kind, ExitCode> kCodes[] = {
        {Kind::WrongUse, ExitCode::WrongUse},         {Kind::NotReached, ExitCode::CentreNotReached},
        {Kind::TokenRefused, ExitCode::TokenRefused}, {Kind::UnknownCompany, ExitCode::UnknownCompany},
        {Kind::UnknownUser, ExitCode::UnknownUser},   {Kind::NotFound, ExitCode::NotFound},
        {Kind::NoAnswer, ExitCode::CentreFailed},     {Kind::Refused, ExitCode::CentreFailed},
    };
    for (const auto& [known, code] : kCodes)
        if (known == kind)
            return code;
    return ExitCode::Other;
}

} // namespace cli

#endif
