#include "centre/box/Uploads.h"

#include "centre/base/Token.h"
#include "components/bulkhaul/FileFailure.h"

namespace centre {

namespace {

constexpr std::chrono::minutes kLongestPause(10);
constexpr int kUploadsOfUser = 64;

/// Waits for the calls that use it.
void abandon(Upload& upload)
{
    const std::unique_lock<std::shared_mutex> alone(upload.inUse);
    upload.file.reset();
}

template <class ByName>
void abandonAll(const ByName& uploads)
{
    for (const auto& [name, kept] : uploads)
        abandon(*kept.upload);
}

[[noreturn]] void throwEnded()
{
    throw bulkhaul::FileFailure(haulbox::BUSY, "this upload has ended, or another has taken its place");
}

} // namespace

std::string Uploads::begin(const std::string& token, const std::string& path, std::uint64_t size,
                           const std::function<std::unique_ptr<bulkhaul::IncomingFile>()>& open)
{
    giveUp(path);
    const auto upload = std::make_shared<Upload>();
    upload->token = token;
    upload->path = path;
    upload->size = size;
    upload->file = open();
    std::string name = newToken();
    ByName taken;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        taken = takeStale(path); // again: another may have begun meanwhile
        takeSurplus(token, taken);
        m_Uploads[name] = {upload, std::chrono::steady_clock::now()};
    }
    abandonAll(taken);
    return name;
}

void Uploads::giveUp(const std::string& path)
{
    ByName stale;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        stale = takeStale(path);
    }
    abandonAll(stale);
}

/// Takes the uploads to the same path and those that have been idle for long.
Uploads::ByName Uploads::takeStale(const std::string& path)
{
    ByName stale;
    const auto now = std::chrono::steady_clock::now();
    for (auto each = m_Uploads.begin(); each != m_Uploads.end();) {
        const auto next = std::next(each);
        if (each->second.upload->path == path || now - each->second.lastUse > kLongestPause)
            stale.insert(m_Uploads.extract(each));
        each = next;
    }
    return stale;
}

void Uploads::takeSurplus(const std::string& token, ByName& taken)
{
    auto oldest = m_Uploads.end();
    int count = 0;
    for (auto each = m_Uploads.begin(); each != m_Uploads.end(); ++each) {
        if (each->second.upload->token != token)
            continue;
        ++count;
        if (oldest == m_Uploads.end() || each->second.lastUse < oldest->second.lastUse)
            oldest = each;
    }
    if (count >= kUploadsOfUser)
        taken.insert(m_Uploads.extract(oldest));
}

std::shared_ptr<Upload> Uploads::find(const std::string& name, const std::string& token)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto found = m_Uploads.find(name);
    if (found == m_Uploads.end() || found->second.upload->token != token)
        throwEnded();
    found->second.lastUse = std::chrono::steady_clock::now();
    return found->second.upload;
}

void Uploads::use(const std::string& name, const std::string& token, const std::function<void(Upload&)>& work)
{
    const std::shared_ptr<Upload> upload = find(name, token);
    const std::shared_lock<std::shared_mutex> shared(upload->inUse);
    if (!upload->file)
        throwEnded();
    work(*upload);
}

void Uploads::finish(const std::string& name, const std::string& token,
                     const std::function<void(Upload&)>& work)
{
    const std::shared_ptr<Upload> upload = find(name, token);
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Uploads.erase(name);
    }
    const std::unique_lock<std::shared_mutex> alone(upload->inUse);
    if (!upload->file)
        throwEnded();
    work(*upload);
    upload->file.reset();
}

} // namespace centre
