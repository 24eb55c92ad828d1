#ifndef LUMO_CENTRE_DATABASE_DATABASEERROR_H
#define LUMO_CENTRE_DATABASE_DATABASEERROR_H

#include <stdexcept>
#include <string>
#include <utility>

namespace centre {

/// A failure of the database. The text is the engine's own.
class DatabaseError : public std::runtime_error
{
public:
    enum class Kind
    {
        Other,
        Unique,        ///< a record with the same unique columns exists
        PrimaryKey,    ///< a record with the same identifier exists
        ForeignKey,    ///< a record that is referred to does not exist
        Check,         ///< a value is outside of its range, or no identifier is left
        Full,          ///< the disk of the database is full
        Busy,          ///< another process writes, or all connections are in use
        Lost,          ///< the connection to the server was lost
        Serialization, ///< the transaction met another one and should be run again
        NotADatabase   ///< the file, or what the server has, is not a database of this engine
    };

    DatabaseError(Kind kind, const std::string& reason, std::string constraint = {})
        : std::runtime_error(reason), m_Kind(kind), m_Constraint(std::move(constraint))
    {
    }
    Kind kind() const { return m_Kind; }
    /// The name of the constraint that was not kept, if the engine reports it.
    const std::string& constraint() const { return m_Constraint; }

private:
    Kind m_Kind;
    std::string m_Constraint;
};

} // namespace centre

#endif
