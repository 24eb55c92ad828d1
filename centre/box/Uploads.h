#ifndef LUMO_CENTRE_BOX_UPLOADS_H
#define LUMO_CENTRE_BOX_UPLOADS_H

#include "components/bulkhaul/IncomingFile.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>

namespace centre {

/// One large file on its way into a box.
struct Upload
{
    std::string token;  ///< of the user who began it
    std::string path;   ///< on the box
    std::uint64_t size; ///< of the whole file, in bytes

    std::shared_mutex inUse;                      ///< shared by calls, alone when it is given up
    std::unique_ptr<bulkhaul::IncomingFile> file; ///< empty once it is given up
};

/// The uploads of large files that are under way. Safe from any thread; functions throw FileFailure.
class Uploads
{
public:
    /// A new upload to `path`, under a new name, in place of any other to that path. The partial file of one
    /// that nobody goes on with stays for the next.
    /// A user has a limited number of them; the one idle for longest gives way.
    std::string begin(const std::string& token, const std::string& path, std::uint64_t size,
                      const std::function<std::unique_ptr<bulkhaul::IncomingFile>()>& open);

    /// Calls `work` with the upload, unless it is not that user's, has ended or another has taken its place.
    void use(const std::string& name, const std::string& token, const std::function<void(Upload&)>& work);

    /// The same for the last time: nobody else uses it meanwhile or afterwards.
    void finish(const std::string& name, const std::string& token, const std::function<void(Upload&)>& work);

    /// Gives up an upload to `path`, since something else is put there.
    void giveUp(const std::string& path);

private:
    struct Kept
    {
        std::shared_ptr<Upload> upload;
        std::chrono::steady_clock::time_point lastUse;
    };

    typedef std::map<std::string, Kept> ByName;

    /// Each takes uploads out; the caller holds the mutex.
    ByName takeStale(const std::string& path);
    void takeSurplus(const std::string& token, ByName& taken);

    std::shared_ptr<Upload> find(const std::string& name, const std::string& token);

    std::mutex m_Mutex;
    ByName m_Uploads;
};

} // namespace centre

#endif
