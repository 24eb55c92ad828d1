#ifndef LUMO_CENTRE_BASE_ERROR_H
#define LUMO_CENTRE_BASE_ERROR_H

#include <stdexcept>
#include <string>

namespace centre {

/// How `lumo-centre` ends. The numbers are documented in docs/centre.md and stay.
enum class ExitCode
{
    Success = 0,
    Failed = 1,      ///< a reason of the machine: disk, permission, port, database
    WrongUse = 2,    ///< arguments that can't be right
    Incomplete = 3,  ///< imported, but something below the folder could not be registered
    InUse = 4,       ///< another process serves the data folder
    NoDataFolder = 5 ///< not a data folder, one that exists already, or one of a newer version
};

/// What went wrong, in words for the one who runs the centre.
class Error : public std::runtime_error
{
public:
    Error(ExitCode code, const std::string& reason) : std::runtime_error(reason), m_Code(code) {}
    ExitCode code() const { return m_Code; }

private:
    ExitCode m_Code;
};

/// The refusal of a request, or of something that is to be brought in.
inline Error refusal(const std::string& reason)
{
    return {ExitCode::Failed, reason};
}

} // namespace centre

#endif
