#include "centre/content/Ingest.h"

#include "centre/base/Path.h"
#include "centre/base/Text.h"
#include "centre/content/IngestWriter.h"
#include "centre/image/ImageReader.h"
#include "centre/image/ImageTexts.h"
#include "centre/image/NoImage.h"
#include "centre/store/ImageNotes.h"
#include "centre/store/Store.h"
#include "components/bulkhaul/files/Folder.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <optional>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace centre {

namespace {

using Outcome = IngestedFile::Outcome;

/// A file below the folder, and what was found out about it.
struct File
{
    std::uint32_t id;
    std::string below; ///< its path from the disk's root
    std::uint64_t size;
    std::optional<image::Image> image{};
    std::optional<Outcome> outcome{}; ///< none: an image to be registered
    std::string reason{};

    std::string folder() const
    {
        const std::size_t slash = below.rfind('/');
        return slash == std::string::npos ? "" : below.substr(0, slash + 1);
    }
    std::string stem() const { return std::filesystem::path(below).stem().string(); }
};

/// Collects the files of a disk that are registered and present.
class FileList : public DiskVisitor
{
public:
    bool visit(DiskEntry& entry) override
    {
        if (entry.real != DiskEntry::Real::Present)
            return false;
        if (!entry.isFolder && entry.id != 0)
            files.push_back({entry.id, entry.below, entry.size});
        return entry.isFolder;
    }
    void skip(const std::string&, const std::string&) override {} // the import has reported it

    std::vector<File> files;
};

bool isHeights(const image::Image& image)
{
    if (image.bands_size() != 1)
        return false;
    for (const char* type : {"Int16", "Int32", "Float32", "Float64"})
        if (image.bands(0).type() == type)
            return true;
    return false;
}

const RecordKind& recordKindOf(const image::Image& image)
{
    const bool isCamera = image.driver() == "JPEG"; // whose sensor is a camera's model
    const char* kind = !image.sensor().empty() && !isCamera ? "sat"
                       : isHeights(image)                   ? "dem"
                       : image.has_geographic_bounds()      ? "dom"
                                                            : "photo";
    return *findKind(kind);
}

void read(ImageReader& reader, bulkhaul::FolderCache& folders, File& file)
{
    try {
        std::string name;
        const bulkhaul::Folder& folder = folders.parentOf(file.below, name);
        file.image = reader.check(folder, name);
    } catch (const NoImage&) {
        file.outcome = Outcome::NoImage;
    } catch (const std::exception& exception) {
        file.outcome = Outcome::Refused;
        file.reason = exception.what();
    }
}

/// Reads files in several processes at once. Calls `progress` with the number of files so far, on this
/// thread.
void readAll(ImageReader& reader, const bulkhaul::Folder& root, unsigned processes,
             const std::vector<File*>& files, const std::function<void(std::uint64_t)>& progress)
{
    std::atomic<std::size_t> next{0};
    const auto work = [&](bool reports) {
        bulkhaul::FolderCache folders(root, bulkhaul::Folder::Missing::Fail);
        for (std::size_t i = next++; i < files.size(); i = next++) {
            read(reader, folders, *files[i]);
            if (reports)
                progress(i + 1);
        }
    };
    std::vector<std::thread> others;
    for (unsigned i = 1; i < processes; ++i)
        others.emplace_back(work, false);
    work(true);
    for (std::thread& other : others)
        other.join();
}

/// Some metadata documents of satellites can be opened like an image, and then read the image beside them.
bool isDocument(const image::Image& image)
{
    return image.driver() == "DIMAP";
}

void makePart(File& part)
{
    if (part.outcome == Outcome::Known)
        return;
    part.outcome = Outcome::Part;
    part.reason.clear();
}

/// Decides between an image and another file that it refers to.
void relate(File& image, File& other)
{
    if (other.image && isDocument(*image.image)) {
        if (other.image->sensor().empty())
            other.image->set_sensor(image.image->sensor());
        if (other.image->date().empty())
            other.image->set_date(image.image->date());
        makePart(image);
        return;
    }
    // Overviews and masks are smaller than their image, a VRT is smaller than what it shows.
    const bool isSmaller = other.size < image.size && image.image->driver() != "VRT";
    if (!other.image || isDocument(*other.image) || isSmaller)
        makePart(other);
}

/// Finds the files that belong to an image of whole folders.
void findParts(std::vector<File*>& files)
{
    std::unordered_map<std::string, File*> byPath;
    for (File* file : files)
        byPath.emplace(file->below, file);
    for (File* file : files)
        for (int i = 0; file->image && i < file->image->files_size(); ++i) {
            const auto other = byPath.find(file->folder() + file->image->files(i));
            if (other != byPath.end() && other->second != file)
                relate(*file, *other->second);
        }
}

NewImage newImageOf(const File& file, const RecordKind* kind)
{
    const image::Image& image = *file.image;
    NewImage made{file.id, kind != nullptr ? kind : &recordKindOf(image), searchTexts(image), {}};
    made.texts.emplace_back("imageName", file.stem());
    made.note = {formatText(image), georeferenceText(image), jsonText(image)};
    return made;
}

class Ingestion
{
public:
    Ingestion(Store& store, const IngestOptions& options, IngestReport& report)
        : m_Store(store),
          m_Options(options),
          m_Report(report),
          m_Kind(findKind(options.kind)),
          m_Writer(store.database(), store.companyId(options.companyNo), options.projectName),
          m_Notes(store.database()),
          m_Processes(options.processes > 0 ? options.processes
                                            : std::max(1u, std::thread::hardware_concurrency())),
          m_Reader({"", m_Processes, {}})
    {
        requireName("the project's name", options.projectName);
        if (!options.kind.empty() && (m_Kind == nullptr || !m_Kind->hasType() || !m_Kind->hasMainFile()))
            throw Error(ExitCode::WrongUse, "images can't be of kind " + escaped(options.kind));
        if (!std::filesystem::exists(imageProgram()))
            throw Error(ExitCode::Failed, "the program that reads images is missing: " + imageProgram());
    }

    void run()
    {
        const Disk disk = importPlace();
        m_Root = disk.rootPath == "/" ? "" : disk.rootPath;
        const bulkhaul::Folder root = bulkhaul::Folder::open(disk.rootPath);
        std::vector<File> files = filesBelow(disk);
        for (std::size_t first = 0; first < files.size();) {
            const std::size_t end = endOfGroup(files, first);
            std::vector<File*> group;
            for (std::size_t i = first; i < end; ++i)
                group.push_back(&files[i]);
            takeGroup(root, group, first);
            for (File* file : group)
                file->image.reset(); // its memory
            first = end;
        }
        m_Report.projectIsNew = m_Writer.projectIsNew();
    }

private:
    /// Imports the folder. Returns the disk that shows it.
    Disk importPlace()
    {
        ImportOptions import;
        import.folder = realFolder(m_Store, m_Options.folder);
        import.companyNo = m_Options.companyNo;
        import.boxCode = m_Options.boxCode;
        import.problem = m_Options.problem;
        std::optional<Disk> disk = diskOf(import.folder);
        if (disk && (!m_Options.boxCode.empty() && disk->rootPath != import.folder))
            throw Error(ExitCode::WrongUse, "the folder is part of disk " + disk->name +
                                                ": import that disk to change its storage box");
        import.diskName = disk ? disk->name : newDiskName(import.folder);
        m_Report.diskName = import.diskName;
        if (!disk || disk->rootPath == import.folder) {
            m_Report.import = importTree(m_Store, import);
            disk = diskOf(import.folder);
            m_FolderId = disk->topFolderId;
        } else {
            m_Below = pathBelow(disk->rootPath, import.folder);
            m_Report.import.rootPath = import.folder;
            m_FolderId = importFolder(m_Store, *disk, m_Below, import, m_Report.import);
        }
        return *disk;
    }

    std::string newDiskName(const std::string& folder) const
    {
        return m_Options.diskName.empty() ? lastName(folder) : m_Options.diskName;
    }

    /// Returns the disk that shows a folder: of several that with the longest root.
    std::optional<Disk> diskOf(const std::string& folder)
    {
        std::optional<Disk> found;
        for (const Disk& disk : findDisks(m_Store, {m_Options.diskName, m_Options.companyNo, ""}))
            if (isAtOrBelow(disk.rootPath, folder) &&
                (!found || disk.rootPath.size() > found->rootPath.size()))
                found = disk;
        return found;
    }

    /// Returns the files in the order of their folders.
    std::vector<File> filesBelow(const Disk& disk)
    {
        FileList list;
        DiskWalk(m_Store, disk).run(list, m_Below, m_FolderId);
        std::sort(list.files.begin(), list.files.end(), [](const File& one, const File& other) {
            return std::pair(one.folder(), one.below) < std::pair(other.folder(), other.below);
        });
        return std::move(list.files);
    }

    /// Returns the end of a group of whole folders.
    static std::size_t endOfGroup(const std::vector<File>& files, std::size_t first)
    {
        constexpr std::size_t kLeast = 1000;
        std::size_t end = std::min(first + kLeast, files.size());
        while (end < files.size() && files[end].folder() == files[end - 1].folder())
            ++end;
        return end;
    }

    void takeGroup(const bulkhaul::Folder& root, std::vector<File*>& group, std::uint64_t before)
    {
        Statement::Identifiers ids;
        for (const File* file : group)
            ids.push_back(file->id);
        const auto known = m_Writer.known(ids);
        std::vector<File*> unknown;
        for (File* file : group) {
            if (known.count(file->id) == 0) {
                unknown.push_back(file);
                continue;
            }
            file->outcome = Outcome::Known;
            file->image = imageOf(m_Notes.description(file->id)); // whose parts are not images of their own
        }
        const std::uint64_t start = before + group.size() - unknown.size();
        readAll(m_Reader, root, m_Processes, unknown,
                [&](std::uint64_t count) { m_Options.progress(start + count); });
        findParts(group);
        registerImages(unknown);
        for (const File* file : group)
            ++m_Report.counts[*file->outcome];
    }

    void registerImages(const std::vector<File*>& files)
    {
        std::vector<NewImage> images;
        for (const File* file : files)
            if (!file->outcome)
                images.push_back(newImageOf(*file, m_Kind));
        m_Writer.add(images);
        auto image = images.begin();
        for (File* file : files) {
            IngestedFile done{m_Root + "/" + file->below, Outcome::Known};
            if (!file->outcome) {
                file->outcome = image->recordId != 0     ? Outcome::Taken
                                : !image->reason.empty() ? Outcome::Refused
                                                         : Outcome::Known;
                file->reason = image->reason;
                done.kind = image->recordId != 0 ? image->kind->name : "";
                done.recordId = image->recordId;
                m_Report.taken[image->kind->name] += image->recordId != 0 ? 1 : 0;
                ++image;
            }
            done.outcome = *file->outcome;
            done.reason = file->reason;
            if (done.outcome != Outcome::Known)
                m_Options.report(done);
        }
    }

    Store& m_Store;
    const IngestOptions& m_Options;
    IngestReport& m_Report;
    const RecordKind* const m_Kind; ///< null: of each by its image
    IngestWriter m_Writer;
    ImageNotes m_Notes;
    const unsigned m_Processes;
    ImageReader m_Reader;
    std::string m_Root;  ///< of the disk, without a "/" at its end
    std::string m_Below; ///< the folder's path from the disk's root
    std::uint32_t m_FolderId = 0;
};

} // namespace

IngestReport ingest(Store& store, const IngestOptions& options)
{
    IngestReport report;
    Ingestion(store, options, report).run();
    return report;
}

} // namespace centre
