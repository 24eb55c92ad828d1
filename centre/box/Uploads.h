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
    std::string token;  ///< of the user who began the upload
    std::string path;   ///< on the box
    std::uint64_t size; ///< of the whole file, in bytes

    std::shared_mutex inUse;                      ///< shared by calls, exclusive when it is given up
    std::unique_ptr<bulkhaul::IncomingFile> file; ///< empty once it is given up
};

/// The uploads of large files that are under way. Safe from any thread; functions throw FileFailure.
class Uploads
{
public:
    /// Begins an upload to `path` and returns its new name. Gives up any other upload to that path, whose
    /// partial file stays for the next. A user has a limited number of uploads; the one that is idle for
    /// longest is given up.
    std::string begin(const std::string& token, const std::string& path, std::uint64_t size,
                      const std::function<std::unique_ptr<bulkhaul::IncomingFile>()>& open);

    /// Calls `work` with the upload. Throws if it belongs to another user, has ended, or another has taken
    /// its place.
    void use(const std::string& name, const std::string& token, const std::function<void(Upload&)>& work);

    /// The same for the last time: no other call uses the upload meanwhile or afterwards.
    void finish(const std::string& name, const std::string& token, const std::function<void(Upload&)>& work);

    /// Gives up an upload to `path`, because another file is written there.
    void giveUp(const std::string& path);

private:
    struct Kept
    {
        std::shared_ptr<Upload> upload;
        std::chrono::steady_clock::time_point lastUse;
    };

    typedef std::map<std::string, Kept> ByName;

    // Each removes uploads from the list. The caller holds the mutex.
    ByName takeStale(const std::string& path);
    void takeSurplus(const std::string& token, ByName& taken);

    std::shared_ptr<Upload> find(const std::string& name, const std::string& token);

    std::mutex m_Mutex;
    ByName m_Uploads;
};

} // namespace centre

#endif
