#ifndef LUMO_CENTRE_CONTENT_INGESTWRITER_H
#define LUMO_CENTRE_CONTENT_INGESTWRITER_H

#include "centre/store/ImageNotes.h"
#include "centre/store/RecordWriter.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace centre {

/// An image to be registered.
struct NewImage
{
    std::uint32_t fileId;
    const RecordKind* kind;
    RecordTexts texts; ///< but for its type and its main file
    ImageNote note;
    std::uint32_t recordId = 0; ///< set when it was registered
    std::string reason{};       ///< set when it was refused; with neither it is known
};

/// Registers images in a project of a company, which it makes for the first one if need be, and types with
/// the names of kinds. Throws DatabaseError.
class IngestWriter
{
public:
    IngestWriter(Database& database, std::uint32_t companyId, std::string projectName);

    bool projectIsNew() const { return m_ProjectIsNew; }
    /// Returns those of the files that are main files of records of the project.
    std::unordered_set<std::uint32_t> known(const Statement::Identifiers& files);
    /// Registers images that are not known, in one transaction unless one of them is refused.
    void add(std::vector<NewImage>& images);

private:
    void findProject();
    void makeProject();
    std::uint32_t typeOf(const RecordKind& kind);
    void addInOne(std::vector<NewImage>& images, std::size_t first, std::size_t end);

    Database& m_Database;
    const std::uint32_t m_CompanyId;
    const std::string m_ProjectName;
    std::uint32_t m_ProjectId = 0;
    bool m_ProjectIsNew = false;
    RecordWriter m_Writer;
    ImageNotes m_Notes;
    std::unique_ptr<Statement> m_Known;
    std::map<const RecordKind*, std::uint32_t> m_Types;
};

} // namespace centre

#endif
