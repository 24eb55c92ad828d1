#ifndef LUMO_CENTRE_CONTENT_INGEST_H
#define LUMO_CENTRE_CONTENT_INGEST_H

#include "centre/content/Import.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace centre {

/// What became of a file.
struct IngestedFile
{
    enum class Outcome
    {
        Taken,
        Known,   ///< the project has a record of it already
        Part,    ///< belongs to an image beside it: metadata, overviews, masks
        NoImage, ///< has no format of images
        Refused
    };

    std::string path; ///< absolute
    Outcome outcome;
    std::string kind{};         ///< of a file that was taken: the kind of its record
    std::uint32_t recordId = 0; ///< the same
    std::string reason{};       ///< of a refusal
};

struct IngestOptions
{
    std::string folder;      ///< the real folder
    std::string projectName; ///< the project of the records; made if the company has none of that name
    std::string companyNo;   ///< the company that owns the project and the disk
    std::string diskName;    ///< empty: the disk that holds the folder, or a new one of the folder's name
    std::string boxCode;     ///< the storage box of a new disk; empty: none
    std::string kind;        ///< of all records; empty: of each by its image
    unsigned processes = 0;  ///< image processes at once; 0: one for each processor
    /// Gets each file but those that are known.
    std::function<void(const IngestedFile&)> report = [](const IngestedFile&) {};
    /// Gets a text for a terminal for each entry that can't be imported.
    std::function<void(const std::string&)> problem = [](const std::string&) {};
    std::function<void(std::uint64_t)> progress = [](std::uint64_t) {}; ///< gets the number of files so far
};

struct IngestReport
{
    ImportReport import;
    std::string diskName;
    bool projectIsNew = false;
    std::map<std::string, std::uint64_t> taken; ///< by kind
    std::map<IngestedFile::Outcome, std::uint64_t> counts;
};

/// Imports a real folder as importTree does, then registers each image in it that the project has no record
/// of, and keeps what was found out about it. The kind of a record is that of the options or, by the image:
/// `sat` with the metadata of a satellite, `dem` for one band of signed or floating-point numbers, of all
/// others `dom` with georeference and `photo` without. Name, sensor, date and bounds are those of the file.
/// An image is read as an analysis does; what is damaged is refused, and the next one goes on. Images are
/// registered by folder, so that another call completes one that was interrupted. Throws Error.
IngestReport ingest(Store& store, const IngestOptions& options);

} // namespace centre

#endif
