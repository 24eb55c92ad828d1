#ifndef LUMO_CENTRE_STORE_IMAGENOTES_H
#define LUMO_CENTRE_STORE_IMAGENOTES_H

#include "centre/database/Database.h"

#include <cstdint>
#include <memory>
#include <string>

namespace centre {

/// What was found out about an image file.
struct ImageNote
{
    std::string format;       ///< the file's short text
    std::string georeference; ///< its long text; empty: none
    std::string description;  ///< a centre.image.Image as JSON, see image/image_process.proto
};

/// Keeps what was found out about image files, inside the caller's transactions, in the place of what was
/// known before. A description is of the file as it was then. For one thread at a time. Throws DatabaseError.
class ImageNotes
{
public:
    explicit ImageNotes(Database& database);

    void set(std::uint32_t fileId, const ImageNote& note);
    /// Returns the description of a file; empty if there is none.
    std::string description(std::uint32_t fileId);

private:
    std::unique_ptr<Statement> m_SetTexts;
    std::unique_ptr<Statement> m_SetDescription;
    std::unique_ptr<Statement> m_Description;
};

} // namespace centre

#endif
