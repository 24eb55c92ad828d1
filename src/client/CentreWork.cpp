#include "client/Link.h"
#include "lumo/client/Centre.h"
#include "lumo/core/LumoDataMgr.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace lumo {

using internal::Call;
using internal::LaterAnswer;
using internal::Log;

namespace {

constexpr const char* kNoAnswer = "no answer came within the time limit; the centre may still be at work";

/// Makes a call that returns at once, and waits for its answer.
template <class Start>
LaterAnswer await(const char* method, unsigned int timeout, Start start)
{
    const std::shared_ptr<LaterAnswer> answer = Log::instance().expect(method);
    if (!answer)
        throw Error(Error::Kind::Busy, "an earlier analysis or copy has no answer yet");
    try {
        start();
    } catch (...) {
        Log::instance().expectNothing();
        throw;
    }
    return Log::instance().await(answer, timeout);
}

/// What the library's lines about a call as a whole mean.
std::string reasonText(const std::string& error)
{
    return error.find("cntl->") == 0 ? "the centre was not reached, or the connection broke" : error;
}

/// The files that passed, which signals on threads of the library bring. Shared, since one may come late.
class PassedFiles
{
public:
    void add(const CLumoFilterFile& image)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Files.push_back(image.m_MainFiles.front().second);
    }

    bool has(FileId file) const
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return std::count(m_Files.begin(), m_Files.end(), static_cast<int>(file.number())) > 0;
    }

private:
    mutable std::mutex m_Mutex;
    std::vector<int> m_Files;
};

/// The connection of a signal and a slot, while it lives.
class Slot
{
public:
    explicit Slot(QMetaObject::Connection connection) : m_Connection(std::move(connection)) {}
    ~Slot() { QObject::disconnect(m_Connection); }
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;

private:
    QMetaObject::Connection m_Connection;
};

QList<CLumoFilterFile> filtersOf(const std::vector<Entry>& files, const std::string& sensor)
{
    QList<CLumoFilterFile> filters;
    for (const Entry& file : files) {
        if (file.kind != Entry::Kind::File)
            internal::refuse("'" + file.name.value_or("") + "' is not a file");
        CLumoFilterFile filter;
        filter.m_ImgName = QString::fromStdString(file.name.value_or(std::to_string(file.file.number())));
        filter.m_Sensor = QString::fromStdString(sensor);
        filter.m_MainFiles.append({filter.m_ImgName, static_cast<int>(file.file.number())});
        filters.append(filter);
    }
    return filters;
}

/// The reasons are in the log in the order of the images that they are about, or as one about the call.
std::vector<Centre::Verdict> verdictsOf(const std::vector<Entry>& files, const PassedFiles& passed,
                                        const LaterAnswer& answer)
{
    std::vector<Centre::Verdict> verdicts(files.size());
    std::vector<Centre::Verdict*> failed;
    for (std::size_t i = 0; i < files.size(); ++i) {
        verdicts[i].passed = passed.has(files[i].file);
        if (!verdicts[i].passed)
            failed.push_back(&verdicts[i]);
    }
    for (std::size_t i = 0; i < failed.size(); ++i) {
        const std::size_t reason = answer.errors.size() == failed.size() ? i : 0;
        failed[i]->reason = !answer.ended           ? kNoAnswer
                            : answer.errors.empty() ? "the centre gave no reason"
                                                    : reasonText(answer.errors[reason]);
    }
    return verdicts;
}

/// Waits for the copy that `start` starts, which a signal confirms.
template <class Start>
void copy(const Call& call, unsigned int timeout, Start start)
{
    const auto done = std::make_shared<std::atomic<bool>>(false);
    const Slot slot(QObject::connect(&call.manager(), &CLumoDataMgr::reqFileCopyFinished,
                                     [done](const QString&) { *done = true; }));
    const LaterAnswer answer = await("fileCopy", timeout, start);
    if (*done)
        return;
    if (answer.errors.empty())
        throw Error(Error::Kind::NoAnswer, kNoAnswer, "fileCopy");
    const std::string reason = reasonText(answer.errors.front());
    throw Error(Error::Kind::Refused, reason, "fileCopy", reason);
}

void requireAbsolute(const std::string& path)
{
    if (path.empty() || path.front() != '/') {
        internal::refuse("'" + path +
                         "' is not a path on the centre's machine: write it from the root, as in "
                         "/srv/new/a.tif");
    }
}

} // namespace

std::vector<Centre::Verdict> Centre::analyze(const std::vector<Entry>& files, const std::string& sensor,
                                             bool note, unsigned int timeout) const
{
    const Call call(*m_Link);
    const QList<CLumoFilterFile> filters = filtersOf(files, sensor);
    const auto passed = std::make_shared<PassedFiles>();
    // Without a receiver the slots run at once, on the thread that raises the signal, which then ends the
    // call with its last line in the log.
    const Slot one(QObject::connect(&call.manager(), &CLumoDataMgr::reqAnalyzeImageFinished,
                                    [passed](const CLumoFilterFile& image) { passed->add(image); }));
    const Slot several(QObject::connect(&call.manager(), &CLumoDataMgr::reqAnalyzeImagesFinished,
                                        [passed](const QList<CLumoFilterFile>& images) {
                                            for (const CLumoFilterFile& image : images)
                                                passed->add(image);
                                        }));
    const bool single = filters.size() == 1;
    const LaterAnswer answer = await(single ? "analyzeImage" : "analyzeImages", timeout, [&] {
        single ? call->analyzeImage(filters.front(), note) : call->analyzeImages(filters, note);
    });
    return verdictsOf(files, *passed, answer);
}

void Centre::copyIn(const std::string& path, const Entry& folder, const std::string& below, bool overwrite,
                    unsigned int timeout) const
{
    requireAbsolute(path);
    const Catalogue catalogue(m_Link);
    const DiskId disk = catalogue.diskOf(folder).disk;
    const FolderId target = catalogue.folderOf(folder);
    const Call call(*m_Link);
    copy(call, timeout, [&] {
        call->fileCopy(QString::fromStdString(path), disk.number(), target.number(),
                       QString::fromStdString(below), overwrite);
    });
}

void Centre::copyOut(const Entry& file, const std::string& path, bool overwrite, unsigned int timeout) const
{
    requireAbsolute(path);
    if (file.kind != Entry::Kind::File)
        internal::refuse("'" + file.name.value_or("") + "' is not a file");
    const Call call(*m_Link);
    copy(call, timeout, [&] { call->fileCopy(file.file.number(), QString::fromStdString(path), overwrite); });
}

} // namespace lumo
