#ifndef LUMO_CENTRE_STORE_RECORDWRITER_H
#define LUMO_CENTRE_STORE_RECORDWRITER_H

#include "centre/database/Database.h"
#include "centre/store/RecordKinds.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace centre {

/// A record as texts by keys. The keys are those of its columns, `coordParam8` (another name for
/// `coordExtra7`), `marks` (numbers with a comma or a blank between them), and for a project `company` (a
/// company's number). Numbers are decimal.
using RecordTexts = std::vector<std::pair<std::string, std::string>>;

/// The source of the texts.
enum class Origin
{
    Operator, ///< identifiers and any texts are allowed; missing image comments of marks are added
    User      ///< identifiers are not allowed; numbers and codes must be valid; image comments must exist
};

/// Adds records to the image catalogue, inside the caller's transactions. For one thread at a time.
class RecordWriter
{
public:
    /// `companyId` is that of the user, whose image comments are those of the company and those of none.
    RecordWriter(Database& database, Origin origin, std::uint32_t companyId = 0);
    ~RecordWriter();

    /// Adds a record and returns its identifier, which is the next free one if the texts have none. An empty
    /// text leaves an identifier, a date or degrees empty; elsewhere it is a value.
    /// Throws Error(Failed) for a key that the kind lacks or that comes twice with different texts, a text
    /// that can't be the column's value, a required key that is missing, an identifier that exists already, a
    /// company, project, type, file or control file that does not exist, a type that does not own the kind,
    /// and a text that the origin does not allow. The caller then rolls its transaction back.
    std::uint32_t add(const RecordKind& kind, const RecordTexts& texts);

    /// To be called after the last record, before the commit.
    void finish();

private:
    class Insertion;

    Insertion& insertion(const RecordKind& kind);
    void requireOwner(const RecordKind& kind, std::uint32_t typeId);
    std::string companyId(const std::string* companyNo);
    [[noreturn]] void refuse(const RecordKind& kind, Insertion& insertion, const DatabaseError& error);
    void addMarks(const RecordKind& kind, std::uint32_t id, const std::string& marks);
    void requireImageComment(std::uint32_t id);

    Database& m_Database;
    const Origin m_Origin;
    const std::uint32_t m_CompanyId;
    std::unordered_map<const RecordKind*, std::unique_ptr<Insertion>> m_Insertions;
    std::uint32_t m_LargestMark = 0; ///< of the image comments that were added
    std::unordered_map<std::uint32_t, std::string> m_TypeNames;
    std::unique_ptr<Statement> m_AddMark;
    std::unordered_set<std::uint32_t> m_ImageComments; ///< those that are known to exist
};

} // namespace centre

#endif
