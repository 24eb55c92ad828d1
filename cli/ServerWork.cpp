#include "cli/Commands.h"

#include "cli/DisplayText.h"
#include "cli/ExitCode.h"
#include "cli/Output.h"
#include "cli/Records.h"

#include "lumo/core/LumoDataMgr.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>

namespace cli {

namespace {

/// Has a call made that returns at once, and waits for its answer.
LaterAnswer await(Session& session, const char* word, unsigned int timeout, const std::function<void()>& call)
{
    session.journal.expect(word);
    call();
    return session.journal.await(timeout);
}

/// What the library's lines about a call as a whole mean.
std::string reasonText(const std::string& error)
{
    return error.find("cntl->") == 0 ? "the centre was not reached, or the connection broke" : error;
}

constexpr const char* kNoAnswer = "no answer came in time (see --timeout); the centre may still be at work";

/// The files that passed, told by signals on threads of the library. Shared, since one may come late.
class PassedFiles
{
public:
    void add(const CLumoFilterFile& image)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Files.push_back(image.m_MainFiles.front().second);
    }

    bool holds(unsigned int file)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return std::count(m_Files.begin(), m_Files.end(), static_cast<int>(file)) > 0;
    }

private:
    std::mutex m_Mutex;
    std::vector<int> m_Files;
};

struct Image
{
    std::string place; ///< as typed
    unsigned int file;
    std::string failure; ///< empty: it passed
};

class Analysis
{
public:
    Analysis(Session& session, const AnalysisRequest& request) : m_Session(session), m_Request(request)
    {
        for (const std::string& place : request.places) {
            const Found found = session.catalogue.find(parsePlace(place));
            if (found.kind != Place::Kind::File)
                refuse("'" + place + "' is no file");
            m_Images.push_back({place, found.file.fileID, {}});
            CLumoFilterFile filter;
            filter.m_ImgName = QString::fromStdString(found.file.fileName.value_or(place));
            filter.m_Sensor = QString::fromStdString(request.sensor);
            filter.m_MainFiles.append({filter.m_ImgName, static_cast<int>(found.file.fileID)});
            m_Filters.append(filter);
        }
    }

    void run()
    {
        CLumoDataMgr& manager = m_Session.manager;
        const auto passed = std::make_shared<PassedFiles>();
        // Without a receiver the slots run at once, on the thread that raises the signal, which then ends the
        // call with its last line in the log.
        const auto one = QObject::connect(&manager, &CLumoDataMgr::reqAnalyzeImageFinished,
                                          [passed](const CLumoFilterFile& image) { passed->add(image); });
        const auto several = QObject::connect(
            &manager, &CLumoDataMgr::reqAnalyzeImagesFinished,
            [passed](const QList<CLumoFilterFile>& images) {
                std::for_each(images.begin(), images.end(), [&](const auto& image) { passed->add(image); });
            });
        const bool single = m_Filters.size() == 1;
        const LaterAnswer answer =
            await(m_Session, single ? "analyzeImage" : "analyzeImages", m_Request.timeout, [&] {
                single ? manager.analyzeImage(m_Filters.front(), m_Request.note)
                       : manager.analyzeImages(m_Filters, m_Request.note);
            });
        QObject::disconnect(one);
        QObject::disconnect(several);
        judge(*passed, answer);
    }

    std::size_t failed() const
    {
        return static_cast<std::size_t>(std::count_if(
            m_Images.begin(), m_Images.end(), [](const Image& image) { return !image.failure.empty(); }));
    }

    void show() const
    {
        Json list = Json::array();
        for (const Image& image : m_Images) {
            const bool passed = image.failure.empty();
            const std::string found = passed && m_Request.note ? noted(image.file) : std::string();
            list.push_back({{"file", image.place}, {"fileID", image.file}, {"passed", passed}});
            if (!passed) {
                list.back()["message"] = image.failure;
                complain(image.place + ": " + image.failure);
            } else if (!m_Session.json) {
                print(escaped(image.place + ": passed" + (found.empty() ? "" : ", " + found)) + "\n");
            }
            if (!found.empty())
                list.back()["shortText"] = found;
        }
        if (m_Session.json)
            print(jsonText(list));
    }

private:
    /// The reasons stand in the log in the order of the images that they are about, or as one about the call.
    void judge(PassedFiles& passed, const LaterAnswer& answer)
    {
        std::vector<Image*> failed;
        for (Image& image : m_Images)
            if (!passed.holds(image.file))
                failed.push_back(&image);
        for (std::size_t i = 0; i < failed.size(); ++i) {
            const std::size_t reason = answer.errors.size() == failed.size() ? i : 0;
            failed[i]->failure = !answer.ended           ? kNoAnswer
                                 : answer.errors.empty() ? "the centre did not tell of it"
                                                         : reasonText(answer.errors[reason]);
        }
    }

    std::string noted(unsigned int file) const
    {
        return m_Session.catalogue.find({Place::Kind::File, {}, false, file}).file.shortText.value_or("");
    }

    Session& m_Session;
    const AnalysisRequest& m_Request;
    std::vector<Image> m_Images;
    QList<CLumoFilterFile> m_Filters;
};

/// Waits for the copy that `call` starts, which raises a signal with `text`.
void copy(Session& session, const CopyRequest& request, const std::string& target,
          const std::function<void()>& call)
{
    const auto done = std::make_shared<std::atomic<bool>>(false);
    const auto connection = QObject::connect(&session.manager, &CLumoDataMgr::reqFileCopyFinished,
                                             [done](const QString&) { *done = true; });
    const LaterAnswer answer = await(session, "fileCopy", request.timeout, call);
    QObject::disconnect(connection);
    const std::string names = request.source + " -> " + target;
    if (!*done) {
        throw Failure(
            ExitCode::TransferFailed,
            names + ": " +
                (answer.errors.empty() ? std::string(kNoAnswer) : reasonText(answer.errors.front())));
    }
    print(session.json ? jsonText({{"source", request.source}, {"target", target}})
                       : escaped(names) + ": done\n");
}

void requireAbsolute(const std::string& path)
{
    if (path.empty() || path.front() != '/') {
        throw Failure(
            ExitCode::WrongUse,
            "'" + path +
                "' is no path on the centre's machine: write it from the root, as in /srv/new/a.tif");
    }
}

} // namespace

Action analyzeFiles(const AnalysisRequest& request)
{
    for (const std::string& place : request.places)
        parsePlace(place);
    return [request](Session& session) {
        Analysis analysis(session, request);
        analysis.run();
        analysis.show();
        if (const std::size_t failed = analysis.failed())
            throw Failure(ExitCode::TransferFailed, request.places.size() == 1
                                                        ? std::string()
                                                        : std::to_string(failed) + " of " +
                                                              std::to_string(request.places.size()) +
                                                              " did not pass");
    };
}

Action copyIn(const CopyRequest& request)
{
    requireAbsolute(request.source);
    return [request, place = parsePlace(request.target)](Session& session) {
        const FoundPart folder = request.parents ? session.catalogue.findWithMissing(place)
                                                 : FoundPart{session.catalogue.find(place), {}};
        const auto disk = session.catalogue.diskOf(folder.found);
        if (folder.found.kind == Place::Kind::File || !disk)
            throw Failure(ExitCode::PlaceNotFound, "'" + request.target + "' is no folder");
        const unsigned int folderID = session.catalogue.folderOf(folder.found);
        copy(session, request, request.target, [&] {
            session.manager.fileCopy(QString::fromStdString(request.source), disk->diskID, folderID,
                                     QString::fromStdString(folder.names), request.overwrite);
        });
    };
}

Action copyOut(const CopyRequest& request)
{
    requireAbsolute(request.target);
    return [request, place = parsePlace(request.source)](Session& session) {
        const Found found = session.catalogue.find(place);
        if (found.kind != Place::Kind::File)
            refuse("'" + request.source + "' is no file");
        copy(session, request, request.target, [&] {
            session.manager.fileCopy(found.file.fileID, QString::fromStdString(request.target),
                                     request.overwrite);
        });
    };
}

} // namespace cli
