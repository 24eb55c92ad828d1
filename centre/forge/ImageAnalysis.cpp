#include "centre/forge/ImageAnalysis.h"

#include "centre/base/Cancellation.h"
#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "centre/forge/StoragePlace.h"
#include "centre/image/ImageTexts.h"
#include "centre/store/ImageNotes.h"
#include "centre/store/Ownership.h"

#include <utility>

namespace centre {

namespace {

using forgeserver::Reference;

/// The files of one request, on disks that the user may use in that way.
class Files
{
public:
    Files(ConnectionPool& pool, const User& user, Access access, const IsCanceled& isCanceled)
        : m_Pool(pool), m_User(user), m_Access(access), m_IsCanceled(isCanceled)
    {
    }

    FilePlace place(const Reference& reference) const
    {
        ConnectionPool::Lease connection(m_Pool);
        FilePlace place = placeOfFile(*connection, m_User, m_Access, m_Pool.dataFolder(),
                                      static_cast<std::uint32_t>(reference.ref_id()));
        const std::string name = reference.text().substr(reference.text().find_last_of("/\\") + 1);
        if (!name.empty() && name != place.name)
            throw refusal("its name in the catalogue is " + abbreviated(place.name));
        return place;
    }

    /// Calls `look` with each reference and the place of its file. A failure names the file.
    template <class Look>
    void forEach(const char* what, const google::protobuf::RepeatedPtrField<Reference>& references,
                 Look look) const
    {
        for (const Reference& reference : references) {
            requireNotCanceled(m_IsCanceled);
            try {
                look(reference, place(reference));
            } catch (const std::exception& exception) {
                const auto id = static_cast<std::uint32_t>(reference.ref_id());
                throw refusal(std::string(what) + " file " + std::to_string(id) + " " +
                              abbreviated(reference.text()) + ": " + exception.what());
            }
        }
    }

private:
    ConnectionPool& m_Pool;
    const User& m_User;
    const Access m_Access;
    const IsCanceled& m_IsCanceled;
};

using Found = std::vector<std::pair<std::uint32_t, image::Image>>;

void note(ConnectionPool& pool, const Found& found)
{
    pool.change([&found](Connection& connection) {
        ImageNotes notes(connection.database());
        for (const auto& [id, facts] : found)
            notes.set(id, {formatText(facts), georeferenceText(facts), jsonText(facts)});
        return true;
    });
}

void analyze(ConnectionPool& pool, ImageReader& images, const User& user,
             const forgeserver::AnalyzeImageReq& request, const IsCanceled& isCanceled)
{
    if (request.analyze_flag())
        requireWriter(user);
    if (request.main_file_size() == 0)
        throw refusal("it has no main file");
    const Files files(pool, user, request.analyze_flag() ? Access::Write : Access::Read, isCanceled);
    Found found;
    files.forEach("main", request.main_file(), [&](const Reference& reference, const FilePlace& place) {
        found.emplace_back(static_cast<std::uint32_t>(reference.ref_id()),
                           images.check(place.folder.open(), place.name, isCanceled));
    });
    const auto open = [](const Reference&, const FilePlace& place) {
        openRegularFile(place.folder.open(), place.name);
    };
    files.forEach("metadata", request.meta_file(), open);
    files.forEach("attached", request.attach_file(), open);
    if (request.analyze_flag())
        note(pool, found);
}

} // namespace

void analyzeImage(ConnectionPool& pool, ImageReader& images, const User& user,
                  const forgeserver::AnalyzeImageReq& request, const IsCanceled& isCanceled)
{
    try {
        analyze(pool, images, user, request, isCanceled);
    } catch (const std::exception& exception) {
        throw refusal("image " + abbreviated(request.img_name()) + ": " + exception.what());
    }
}

} // namespace centre
