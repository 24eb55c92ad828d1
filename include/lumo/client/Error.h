#ifndef LUMO_CLIENT_ERROR_H
#define LUMO_CLIENT_ERROR_H

#include "lumo/components/platform/Export.h"

#include <stdexcept>
#include <string>

namespace lumo {

/// What every function of this layer throws when it fails. what() is a whole message for the user, in UTF-8.
class LUMO_EXPORT Error : public std::runtime_error
{
public:
    enum class Kind
    {
        WrongUse,       ///< an argument or a setting is not valid; nothing was sent
        Closed,         ///< the session is closed
        Busy,           ///< another session is open, or an earlier answer is still due
        NotReached,     ///< the centre was not reached, or not by TLS as asked for
        TokenRefused,   ///< by the centre, or here because it would travel in plain text to another host
        UnknownCompany, ///< the centre knows no such company
        UnknownUser,    ///< the centre knows no such user
        NotFound,       ///< there is no such place or record
        NoAnswer,       ///< a call got no answer: time limit, connection; what it did is not known
        Refused,        ///< the centre answered that it failed the request
        Other
    };

    /// `reason` is what is known of the cause, `operation` the remote operation that failed; both may be
    /// empty.
    Error(Kind kind, const std::string& text, const std::string& operation = {},
          const std::string& reason = {})
        : std::runtime_error(text), m_Kind(kind), m_Operation(operation), m_Reason(reason)
    {
    }
    Error(const Error&) = default;
    Error& operator=(const Error&) = default;
    ~Error() override;

    Kind kind() const { return m_Kind; }
    const std::string& operation() const { return m_Operation; }
    /// A part of what(), for messages of the application's own.
    const std::string& reason() const { return m_Reason; }

private:
    Kind m_Kind;
    std::string m_Operation;
    std::string m_Reason;
};

} // namespace lumo

#endif
