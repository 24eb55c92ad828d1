#include "centre/store/ImageNotes.h"

#include "centre/database/Sql.h"

namespace centre {

namespace {

const Sql kSetTexts("UPDATE file SET short_text = ?, long_text = nullif(?, '') WHERE id = ?");
const Sql kSetDescription("INSERT INTO image_description(file_id, description) VALUES (?, ?)"
                          " ON CONFLICT (file_id) DO UPDATE SET description = excluded.description");
const Sql kDescription("SELECT description FROM image_description WHERE file_id = ?");

} // namespace

ImageNotes::ImageNotes(Database& database)
    : m_SetTexts(database.prepare(kSetTexts)),
      m_SetDescription(database.prepare(kSetDescription)),
      m_Description(database.prepare(kDescription))
{
}

void ImageNotes::set(std::uint32_t fileId, const ImageNote& note)
{
    const ResetAtEnd resetTexts(*m_SetTexts);
    m_SetTexts->bindAll(note.format, note.georeference, fileId);
    m_SetTexts->run();
    const ResetAtEnd resetDescription(*m_SetDescription);
    m_SetDescription->bindAll(fileId, note.description);
    m_SetDescription->run();
}

std::string ImageNotes::description(std::uint32_t fileId)
{
    const ResetAtEnd resetAtEnd(*m_Description);
    m_Description->bindAll(fileId);
    return m_Description->step() ? m_Description->string(0) : std::string();
}

} // namespace centre
