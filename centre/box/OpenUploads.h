#ifndef LUMO_CENTRE_BOX_OPENUPLOADS_H
#define LUMO_CENTRE_BOX_OPENUPLOADS_H

#include "centre/box/Admissions.h"
#include "centre/box/Handles.h"
#include "components/bulkhaul/files/IncomingFile.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <shared_mutex>
#include <string>
#include <utility>

namespace centre {

/// One large file on its way into a box.
struct Upload
{
    Upload(Admissions::Pointer admitted, std::string pathOnBox, std::uint64_t fileSize)
        : admission(std::move(admitted)), path(std::move(pathOnBox)), size(fileSize)
    {
    }

    const Admissions::Pointer admission;   ///< of the file or a folder that it is in: in use, so not idle
    const std::string path;                ///< on the box
    const std::uint64_t size;              ///< of the whole file, in bytes
    std::atomic<std::uint64_t> arrived{0}; ///< bytes that were written or compared

    std::shared_mutex inUse;                      ///< shared by calls, exclusive when it is given up
    std::unique_ptr<bulkhaul::IncomingFile> file; ///< empty once it is given up
};

/// The uploads of large files that are under way. Safe from any thread; functions throw FileFailure.
class OpenUploads
{
public:
    typedef std::chrono::milliseconds Pause;

    /// An upload is busy while a call uses it, and for `pause` after that.
    explicit OpenUploads(Pause pause) : m_Pause(pause) {}

    /// Begins an upload to `path` and returns its handle. Gives up an earlier upload to that path, whose
    /// partial file stays for the next. If that one is busy, throws BUSY and sets `otherBytes` to how far it
    /// is.
    std::string begin(const std::string& token, const Admissions::Pointer& admission, const std::string& path,
                      std::uint64_t size, std::uint64_t& otherBytes,
                      const std::function<std::unique_ptr<bulkhaul::IncomingFile>()>& open);

    /// Returns the upload, which is busy as long as the caller keeps the pointer. Throws ENDED if it is not
    /// of this user or has ended.
    std::shared_ptr<Upload> find(const std::string& handle, const std::string& token);

    /// Calls `work` with the upload. Throws ENDED.
    void use(const std::string& handle, const std::string& token, const std::function<void(Upload&)>& work);

    /// The same for the last time: no other call uses the upload meanwhile or afterwards.
    void finish(const std::string& handle, const std::string& token,
                const std::function<void(Upload&)>& work);

    /// Adds the rights by which they were admitted.
    void addRights(std::set<Admissions::Right>& rights);
    /// Gives up those of a right. Their partial files stay.
    void end(const Admissions::Right& right);

    /// How many are under way.
    std::size_t count();

    /// Gives up an upload to `path`, because another file is written there.
    void giveUp(const std::string& path);

private:
    void endAll(const std::function<bool(const Upload&)>& ends);

    typedef Handles<Upload>::Ended Ended;
    static constexpr std::size_t kUploadsOfUser = 64;

    const Pause m_Pause;
    std::mutex m_Mutex;
    Handles<Upload> m_Uploads{kUploadsOfUser};
};

} // namespace centre

#endif
