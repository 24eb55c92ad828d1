#ifndef LUMO_CENTRE_STORE_RECORDWRITER_H
#define LUMO_CENTRE_STORE_RECORDWRITER_H

#include "centre/store/RecordKinds.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace centre {

/// A record as texts by their keys: those of its columns, `coordParam8`, which is another name for
/// `coordExtra7`, `marks`, numbers with a comma or a blank between them, and for a project `company`, a
/// company's number. Numbers are decimal.
using RecordTexts = std::vector<std::pair<std::string, std::string>>;

/// Whom the texts come from.
enum class Origin
{
    Operator, ///< records may bring their identifiers and any texts; marks get their image comments made
    User      ///< the centre gives identifiers; numbers and codes must be such; image comments be there
};

/// Adds records to the image catalogue, inside the caller's transactions; used by one thread at a time.
class RecordWriter
{
public:
    RecordWriter(SQLite::Database& database, Origin origin);
    ~RecordWriter();

    /// Adds a record and returns its identifier, which is the next free one if the texts have none. A text
    /// that is empty leaves an identifier, a date or degrees empty; elsewhere it is a value.
    /// Throws Error(Failed): a key that the kind lacks or that comes twice with different texts, a text that
    /// can't be the column's value, what is required and missing, an identifier that is taken, a company,
    /// project, type, file or control file that is not there, a type that does not own the kind, what the
    /// origin may not bring. Then nothing of the record is in the database once the transaction is rolled
    /// back.
    std::uint32_t add(const RecordKind& kind, const RecordTexts& texts);

private:
    class Insertion;

    Insertion& insertion(const RecordKind& kind);
    void requireOwner(const RecordKind& kind, std::uint32_t typeId);
    std::string companyId(const std::string* companyNo);
    [[noreturn]] void refuse(const RecordKind& kind, Insertion& insertion,
                             const SQLite::Exception& exception);
    void addMarks(const RecordKind& kind, std::uint32_t id, const std::string& marks);
    void requireImageComment(std::uint32_t id);

    SQLite::Database& m_Database;
    const Origin m_Origin;
    std::unordered_map<const RecordKind*, std::unique_ptr<Insertion>> m_Insertions;
    std::unordered_map<std::uint32_t, std::string> m_TypeNames;
    std::optional<SQLite::Statement> m_AddMark;
    std::unordered_set<std::uint32_t> m_ImageComments; ///< those that are known to be there
};

} // namespace centre

#endif
