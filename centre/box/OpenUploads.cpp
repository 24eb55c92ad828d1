#include "centre/box/OpenUploads.h"

#include "components/bulkhaul/files/FileFailure.h"

namespace centre {

using bulkhaul::FileFailure;

namespace {

/// Waits for the calls that use them.
void closeAll(const std::vector<std::shared_ptr<Upload>>& uploads)
{
    for (const auto& upload : uploads) {
        const std::unique_lock<std::shared_mutex> alone(upload->inUse);
        upload->file.reset();
    }
}

[[noreturn]] void throwEnded()
{
    throw FileFailure(haulbox::ENDED, "this upload has ended, or another has taken its place");
}

} // namespace

std::string OpenUploads::begin(const std::string& token, const Admissions::Pointer& admission,
                               const std::string& path, std::uint64_t size, std::uint64_t& otherBytes,
                               const std::function<std::unique_ptr<bulkhaul::IncomingFile>()>& open)
{
    // In the list before its file is open, so that of two begins at once one finds the other.
    const auto upload = std::make_shared<Upload>(admission, path, size);
    std::string handle;
    Ended ended;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        bool busy = false;
        const auto replaces = [&](const Upload& other, std::chrono::steady_clock::duration idle) {
            if (other.path != path || idle >= m_Pause)
                return other.path == path;
            busy = true;
            otherBytes = other.arrived;
            return false;
        };
        m_Uploads.endIf(replaces, ended);
        if (busy)
            throw FileFailure(haulbox::BUSY, path + ": another transfer writes to it");
        handle = m_Uploads.add(token, upload, ended);
    }
    closeAll(ended);
    try {
        auto file = open();
        const std::unique_lock<std::shared_mutex> alone(upload->inUse);
        upload->file = std::move(file);
    } catch (...) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Uploads.erase(handle);
        throw;
    }
    return handle;
}

std::size_t OpenUploads::count()
{
    Ended ended;
    std::size_t open = 0;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        open = m_Uploads.count(ended);
    }
    closeAll(ended);
    return open;
}

void OpenUploads::addRights(std::set<Admissions::Right>& rights)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Uploads.forEach(
        [&rights](const Upload& each) { rights.emplace(each.admission->token, each.admission->use); });
}

void OpenUploads::end(const Admissions::Right& right)
{
    endAll([&right](const Upload& each) {
        return Admissions::Right(each.admission->token, each.admission->use) == right;
    });
}

void OpenUploads::giveUp(const std::string& path)
{
    endAll([&path](const Upload& other) { return other.path == path; });
}

void OpenUploads::endAll(const std::function<bool(const Upload&)>& ends)
{
    Ended ended;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Uploads.endIf([&ends](const Upload& each, auto) { return ends(each); }, ended);
    }
    closeAll(ended);
}

std::shared_ptr<Upload> OpenUploads::find(const std::string& handle, const std::string& token)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    auto upload = m_Uploads.find(handle, token);
    if (!upload)
        throwEnded();
    return upload;
}

void OpenUploads::use(const std::string& handle, const std::string& token,
                      const std::function<void(Upload&)>& work)
{
    const std::shared_ptr<Upload> upload = find(handle, token);
    const std::shared_lock<std::shared_mutex> shared(upload->inUse);
    if (!upload->file)
        throwEnded();
    work(*upload);
}

void OpenUploads::finish(const std::string& handle, const std::string& token,
                         const std::function<void(Upload&)>& work)
{
    const std::shared_ptr<Upload> upload = find(handle, token);
    const auto end = [&] {
        upload->file.reset();
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Uploads.erase(handle);
    };
    const std::unique_lock<std::shared_mutex> alone(upload->inUse);
    if (!upload->file)
        throwEnded();
    try {
        work(*upload);
    } catch (...) {
        end();
        throw;
    }
    end();
}

} // namespace centre
