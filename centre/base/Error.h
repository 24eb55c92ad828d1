#ifndef LUMO_CENTRE_BASE_ERROR_H
#define LUMO_CENTRE_BASE_ERROR_H

#include <exception>
#include <stdexcept>
#include <string>

namespace centre {

/// The exit codes of `lumo-centre`. The numbers are documented in docs/centre.md and stay.
enum class ExitCode
{
    Success = 0,
    Failed = 1,       ///< refused, or the machine failed: disk, permission, port, database
    WrongUse = 2,     ///< arguments that can't be valid
    Incomplete = 3,   ///< done, but something on a disk could not be read or registered
    InUse = 4,        ///< another process serves the data folder
    NoDataFolder = 5, ///< not a data folder, one that exists already, or one of a newer version
    Differs = 6       ///< the catalogue and a disk differ
};

/// A failure with a text for the operator, or for the user whose request is refused.
class Error : public std::runtime_error
{
public:
    Error(ExitCode code, const std::string& reason) : std::runtime_error(reason), m_Code(code) {}
    ExitCode code() const { return m_Code; }

private:
    ExitCode m_Code;
};

/// Returns the reason of a failed request for its caller. Only the operator hears of failures of the machine.
inline std::string reasonFor(const std::exception& failure)
{
    if (const auto* error = dynamic_cast<const Error*>(&failure))
        return error->what();
    return "the centre could not do it; its log has the cause";
}

/// Returns the refusal of a request or of content.
inline Error refusal(const std::string& reason)
{
    return {ExitCode::Failed, reason};
}

} // namespace centre

#endif
