#include "centre/box/Uploads.h"

#include "centre/Token.h"
#include "components/bulkhaul/FileFailure.h"

namespace centre {

namespace {

constexpr std::chrono::minutes kLongestPause(10);

void giveUp(Upload& upload)
{
    const std::unique_lock<std::shared_mutex> alone(upload.inUse);
    upload.file.reset();
}

} // namespace

std::string Uploads::begin(const std::string& token, const std::string& path, std::uint64_t size,
                           const std::function<std::unique_ptr<bulkhaul::IncomingFile>()>& open)
{
    for (const auto& [name, kept] : takeStale(path))
        giveUp(*kept.upload);
    const auto upload = std::make_shared<Upload>();
    upload->token = token;
    upload->path = path;
    upload->size = size;
    upload->file = open();
    std::string name = newToken();
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Uploads[name] = {upload, std::chrono::steady_clock::now()};
    return name;
}

std::map<std::string, Uploads::Kept> Uploads::takeStale(const std::string& path)
{
    std::map<std::string, Kept> stale;
    const auto now = std::chrono::steady_clock::now();
    const std::lock_guard<std::mutex> lock(m_Mutex);
    for (auto each = m_Uploads.begin(); each != m_Uploads.end();) {
        const auto next = std::next(each);
        if (each->second.upload->path == path || now - each->second.lastUse > kLongestPause)
            stale.insert(m_Uploads.extract(each));
        each = next;
    }
    return stale;
}

void Uploads::use(const std::string& name, const std::string& token, const std::function<void(Upload&)>& work)
{
    std::shared_ptr<Upload> upload;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        const auto found = m_Uploads.find(name);
        if (found != m_Uploads.end() && found->second.upload->token == token) {
            upload = found->second.upload;
            found->second.lastUse = std::chrono::steady_clock::now();
        }
    }
    if (upload) {
        const std::shared_lock<std::shared_mutex> shared(upload->inUse);
        if (upload->file)
            return work(*upload);
    }
    throw bulkhaul::FileFailure(haulbox::BUSY, "this upload has ended, or another has taken its place");
}

void Uploads::end(const std::string& name)
{
    std::map<std::string, Kept>::node_type ended;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        ended = m_Uploads.extract(name);
    }
    if (ended)
        giveUp(*ended.mapped().upload);
}

} // namespace centre
