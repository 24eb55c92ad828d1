#include "centre/content/IngestWriter.h"

#include "centre/base/Error.h"
#include "centre/database/Sql.h"

#include <utility>

namespace centre {

namespace {

const Sql kFindProject("SELECT project_id FROM project WHERE company_id = ? AND project_name = ?");
const Sql kLockProject("UPDATE project SET project_name = project_name WHERE project_id = ?");
const Sql kTypes("SELECT type_id, data_type FROM type WHERE project_id = ? ORDER BY type_id DESC");

/// Selects those of :files that are main files of records of :project, of whatever kind.
std::string knownSql(const Dialect& dialect)
{
    std::string sql;
    for (const RecordKind& kind : recordKinds())
        if (kind.hasMainFile() && kind.hasType())
            sql += (sql.empty() ? "" : " UNION ALL ") + ("SELECT main_file_id FROM " + kind.name) +
                   " JOIN type ON type.type_id = " + kind.name +
                   ".type_id WHERE project_id = :project AND main_file_id IN (SELECT value FROM " +
                   dialect.wantedIds(":files") + " AS wanted)";
    return sql;
}

} // namespace

IngestWriter::IngestWriter(Database& database, std::uint32_t companyId, std::string projectName)
    : m_Database(database),
      m_CompanyId(companyId),
      m_ProjectName(std::move(projectName)),
      m_Writer(database, Origin::Operator, companyId),
      m_Notes(database),
      m_Known(database.prepare(knownSql(database.dialect()),
                               {{":project", ValueType::Integer}, {":files", ValueType::Identifiers}}))
{
    findProject();
}

std::unordered_set<std::uint32_t> IngestWriter::known(const Statement::Identifiers& files)
{
    const ResetAtEnd resetAtEnd(*m_Known);
    m_Known->bind(m_Known->parameter(":project"), m_ProjectId);
    m_Known->bind(m_Known->parameter(":files"), files);
    std::unordered_set<std::uint32_t> known;
    while (m_Known->step())
        known.insert(m_Known->id(0));
    return known;
}

void IngestWriter::add(std::vector<NewImage>& images)
{
    if (images.empty())
        return;
    try {
        addInOne(images, 0, images.size());
        return;
    } catch (const Error&) { // of one of them, which the others need not suffer for
    }
    for (std::size_t i = 0; i < images.size(); ++i)
        try {
            addInOne(images, i, i + 1);
        } catch (const Error& error) {
            images[i].recordId = 0;
            images[i].reason = error.what();
        }
}

void IngestWriter::addInOne(std::vector<NewImage>& images, std::size_t first, std::size_t end)
{
    makeProject();
    Statement::Identifiers files;
    for (std::size_t i = first; i < end; ++i) {
        images[i].recordId = 0;
        files.push_back(images[i].fileId);
        typeOf(*images[i].kind);
    }
    Transaction transaction(m_Database);
    // Another process that registers images of this project waits here, and then finds these.
    const auto lock = m_Database.prepare(kLockProject);
    lock->bindAll(m_ProjectId);
    lock->run();
    const std::unordered_set<std::uint32_t> known = this->known(files);
    for (std::size_t i = first; i < end; ++i) {
        NewImage& image = images[i];
        if (known.count(image.fileId) > 0)
            continue;
        RecordTexts texts = image.texts;
        texts.emplace_back("typeID", std::to_string(typeOf(*image.kind)));
        texts.emplace_back("mainFileID", std::to_string(image.fileId));
        image.recordId = m_Writer.add(*image.kind, texts);
        m_Notes.set(image.fileId, image.note);
    }
    m_Writer.finish();
    transaction.commit();
}

void IngestWriter::findProject()
{
    const auto row = m_Database.prepare(kFindProject);
    row->bindAll(m_CompanyId, m_ProjectName);
    if (row->step())
        m_ProjectId = row->id(0);
}

void IngestWriter::makeProject()
{
    if (m_ProjectId != 0)
        return;
    Transaction transaction(m_Database);
    m_ProjectId = m_Writer.add(*findKind("project"),
                               {{"projectName", m_ProjectName}, {"companyID", std::to_string(m_CompanyId)}});
    transaction.commit();
    m_ProjectIsNew = true;
}

/// Returns the project's type for a kind, which is made if it is missing.
std::uint32_t IngestWriter::typeOf(const RecordKind& kind)
{
    std::uint32_t& id = m_Types[&kind];
    if (id != 0)
        return id;
    Transaction transaction(m_Database);
    const auto rows = m_Database.prepare(kTypes);
    rows->bindAll(m_ProjectId);
    while (rows->step())
        if (owns(rows->string(1), kind))
            id = rows->id(0);
    if (id == 0)
        id = m_Writer.add(*findKind("type"),
                          {{"projectID", std::to_string(m_ProjectId)}, {"dataType", kind.typeName}});
    transaction.commit();
    return id;
}

} // namespace centre
