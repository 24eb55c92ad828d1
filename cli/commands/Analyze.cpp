#include "cli/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/LaterAnswer.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Output.h"

#include "lumo/core/LumoDataMgr.h"

#include <algorithm>
#include <memory>
#include <mutex>

namespace cli {

namespace {

/// The files that passed, reported by signals on threads of the library. Shared, since one may come late.
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

class AnalyzeCommand : public Command
{
public:
    explicit AnalyzeCommand(CLI::App& app)
    {
        addArgument(app, "FILE", m_Places, "Files of the catalogue, each an image");
        app.add_option("--sensor", m_Sensor, "The sensor that made them")->option_text("NAME");
        addFlag(app, "--note", m_Note, "Note what is found in the files' records");
        explain(app, "FILE is a path such as /disk/folder/file or an identifier such as file:33.\n"
                     "--timeout is the limit for all of them together.");
    }

    void check(Options& options) override
    {
        m_Timeout = parseTimeout(options.timeout);
        for (const std::string& place : m_Places)
            parsePlace(place);
    }

    void run(Session& session) override
    {
        findImages(session);
        analyze(session);
        show(session);
        const auto failed = std::count_if(m_Images.begin(), m_Images.end(),
                                          [](const Image& image) { return !image.failure.empty(); });
        if (failed > 0) {
            throw Failure(ExitCode::TransferFailed,
                          m_Images.size() == 1 ? std::string()
                                               : std::to_string(failed) + " of " +
                                                     std::to_string(m_Images.size()) + " did not pass");
        }
    }

private:
    void findImages(Session& session)
    {
        for (const std::string& place : m_Places) {
            const Found found = session.catalogue.find(parsePlace(place));
            if (found.kind != Place::Kind::File)
                refuse("'" + place + "' is not a file");
            m_Images.push_back({place, found.file.fileID, {}});
            CLumoFilterFile filter;
            filter.m_ImgName = QString::fromStdString(found.file.fileName.value_or(place));
            filter.m_Sensor = QString::fromStdString(m_Sensor);
            filter.m_MainFiles.append({filter.m_ImgName, static_cast<int>(found.file.fileID)});
            m_Filters.append(filter);
        }
    }

    void analyze(Session& session)
    {
        CLumoDataMgr& manager = session.manager;
        const auto passed = std::make_shared<PassedFiles>();
        // Without a receiver the slots run on the thread that raises the signal, which logs the end of the
        // call after that.
        const auto one = QObject::connect(&manager, &CLumoDataMgr::reqAnalyzeImageFinished,
                                          [passed](const CLumoFilterFile& image) { passed->add(image); });
        const auto several = QObject::connect(
            &manager, &CLumoDataMgr::reqAnalyzeImagesFinished,
            [passed](const QList<CLumoFilterFile>& images) {
                std::for_each(images.begin(), images.end(), [&](const auto& image) { passed->add(image); });
            });
        const bool single = m_Filters.size() == 1;
        const LaterAnswer answer = await(session, single ? "analyzeImage" : "analyzeImages", m_Timeout, [&] {
            single ? manager.analyzeImage(m_Filters.front(), m_Note)
                   : manager.analyzeImages(m_Filters, m_Note);
        });
        QObject::disconnect(one);
        QObject::disconnect(several);
        judge(*passed, answer);
    }

    /// The log has one reason for each image that failed, in their order, or one for the whole call.
    void judge(PassedFiles& passed, const LaterAnswer& answer)
    {
        std::vector<Image*> failed;
        for (Image& image : m_Images)
            if (!passed.holds(image.file))
                failed.push_back(&image);
        for (std::size_t i = 0; i < failed.size(); ++i) {
            const std::size_t reason = answer.errors.size() == failed.size() ? i : 0;
            failed[i]->failure = !answer.ended           ? kNoAnswer
                                 : answer.errors.empty() ? "the centre reported no result for it"
                                                         : reasonText(answer.errors[reason]);
        }
    }

    void show(Session& session) const
    {
        Json list = Json::array();
        for (const Image& image : m_Images) {
            const bool passed = image.failure.empty();
            const std::string found = passed && m_Note ? noteOf(session, image.file) : std::string();
            list.push_back({{"file", image.place}, {"fileID", image.file}, {"passed", passed}});
            if (!passed) {
                list.back()["message"] = image.failure;
                complain(image.place + ": " + image.failure);
            } else if (!session.json) {
                print(escaped(image.place + ": passed" + (found.empty() ? "" : ", " + found)) + "\n");
            }
            if (!found.empty())
                list.back()["shortText"] = found;
        }
        if (session.json)
            print(jsonText(list));
    }

    static std::string noteOf(Session& session, unsigned int file)
    {
        return session.catalogue.find({Place::Kind::File, {}, false, file}).file.shortText.value_or("");
    }

    std::vector<std::string> m_Places;
    std::string m_Sensor;
    bool m_Note = false;
    unsigned int m_Timeout = 0; ///< milliseconds; 0 for no limit
    std::vector<Image> m_Images;
    QList<CLumoFilterFile> m_Filters;
};

} // namespace

void addAnalyze(CommandSet& commands)
{
    commands.add<AnalyzeCommand>("analyze", "Have the centre analyse images");
}

} // namespace cli
