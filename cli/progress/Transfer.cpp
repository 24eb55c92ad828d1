#include "cli/progress/Transfer.h"

#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"
#include "cli/output/Output.h"
#include "cli/progress/Interrupt.h"
#include "cli/progress/ProgressView.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

namespace cli {

namespace {

using Phase = Transfer::Phase;
using Clock = Transfer::Clock;

/// What the observer of a transfer reports, with what it found at the target.
struct News
{
    std::size_t transfer = 0; ///< its index
    lumo::Transfer::Progress progress;
    Clock::time_point when = Clock::now();
    std::string target;
    bool wasFile = false;
    bool wasFolder = false;
};

class NewsQueue
{
public:
    void push(News news)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_News.push_back(std::move(news));
        m_Arrived.notify_one();
    }

    std::optional<News> next(std::chrono::milliseconds limit)
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        if (!m_Arrived.wait_for(lock, limit, [this] { return !m_News.empty(); }))
            return {};
        News news = std::move(m_News.front());
        m_News.pop_front();
        return news;
    }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Arrived;
    std::deque<News> m_News;
};

/// The name of what is moved, which a task's identifier begins with; a UUID in braces follows.
std::string nameOfTask(const std::string& taskID)
{
    constexpr std::size_t kUuid = 38;
    return taskID.size() > kUuid ? taskID.substr(0, taskID.size() - kUuid) : std::string();
}

/// The observer of a transfer.
class Listener
{
public:
    Listener(NewsQueue& queue, const Transfer& transfer) : m_Queue(queue), m_Folder(transfer.folder)
    {
        m_News.transfer = transfer.number - 1;
        m_News.target = transfer.target;
    }

    void operator()(const lumo::Transfer::Progress& progress)
    {
        if (!m_Began)
            begin(progress.task);
        m_News.progress = progress;
        m_News.when = Clock::now();
        m_Queue.push(m_News);
    }

private:
    /// Looks at the target of a get before the transfer touches it.
    void begin(const std::string& task)
    {
        m_Began = true;
        if (m_Folder.empty())
            return;
        const std::string name = nameOfTask(task);
        // The task does not know a name that is too long for its record.
        if (!name.empty())
            m_News.target = below(m_Folder, name);
        m_News.wasFile = isFileOrLink(m_News.target);
        m_News.wasFolder = isFolder(m_News.target);
    }

    NewsQueue& m_Queue;
    const std::string m_Folder;
    News m_News;
    bool m_Began = false;
};

class Run
{
public:
    Run(std::vector<Transfer>& transfers, bool json)
        : m_Transfers(transfers), m_View(ProgressView::make(json)), m_Totals(transfers)
    {
    }

    void start(Transfer& transfer);
    /// Returns the first failure of the output, which stops no transfer.
    std::optional<Failure> toEnd();

private:
    template <class... Arguments>
    void view(void (ProgressView::*call)(const Arguments&...), const Arguments&... arguments);
    void show(std::chrono::milliseconds patience);
    void take(const News& news);
    void begin(Transfer& transfer, const News& news);
    void finish(Transfer& transfer, const lumo::Transfer::Outcome& outcome);
    void fail(Transfer& transfer, int code, const std::string& failure);

    std::vector<Transfer>& m_Transfers;
    std::unique_ptr<ProgressView> m_View;
    Totals m_Totals;
    NewsQueue m_Queue;
    std::size_t m_Running = 0;
    Clock::time_point m_Refreshed;
    std::optional<Failure> m_OutputFailure;
    std::vector<lumo::Transfer> m_Started; ///< last: while they live, the library pushes to the queue
};

template <class... Arguments>
void Run::view(void (ProgressView::*call)(const Arguments&...), const Arguments&... arguments)
{
    try {
        ((*m_View).*call)(arguments...);
    } catch (const Failure& failure) {
        if (!m_OutputFailure) {
            const std::string reason = failure.what();
            m_OutputFailure.emplace(failure.code(),
                                    reason.empty() ? "nobody reads the output any more" : reason);
        }
    }
}

void Run::start(Transfer& transfer)
{
    try {
        // One observer for all copies that the library makes of the function.
        const auto listener = std::make_shared<Listener>(m_Queue, transfer);
        const auto observer = [listener](const lumo::Transfer::Progress& progress) { (*listener)(progress); };
        m_Started.push_back(transfer.start({transfer.overwrite, observer}));
    } catch (const lumo::Error& error) {
        if (transfer.mustStart)
            throw;
        transfer.begin = Clock::now();
        fail(transfer, 0, error.what());
        return;
    }
    ++m_Running;
    show(std::chrono::milliseconds(0));
}

std::optional<Failure> Run::toEnd()
{
    while (m_Running > 0)
        show(m_View->interval());
    view(&ProgressView::finished, m_Totals);
    return m_OutputFailure;
}

void Run::show(std::chrono::milliseconds patience)
{
    if (auto news = m_Queue.next(patience))
        do {
            take(*news);
            news = m_Queue.next(std::chrono::milliseconds(0));
        } while (news);
    if (Clock::now() - m_Refreshed >= m_View->interval()) {
        m_Refreshed = Clock::now();
        m_Totals.sample();
        view(&ProgressView::refresh, m_Totals);
    }
}

void Run::take(const News& news)
{
    Transfer& transfer = m_Transfers[news.transfer];
    const lumo::Transfer::Progress& progress = news.progress;
    if (transfer.phase == Phase::Waiting)
        begin(transfer, news);
    if (progress.percent > transfer.percent) {
        transfer.percent = progress.percent;
        view(&ProgressView::advanced, transfer, m_Totals);
    }
    if (progress.outcome) {
        --m_Running;
        transfer.end = news.when;
        finish(transfer, *progress.outcome);
    }
}

void Run::begin(Transfer& transfer, const News& news)
{
    transfer.phase = Phase::Running;
    transfer.begin = news.when;
    transfer.taskID = news.progress.task;
    transfer.target = news.target;
    transfer.wasFile = news.wasFile;
    transfer.wasFolder = news.wasFolder;
    view(&ProgressView::began, transfer);
}

void Run::finish(Transfer& transfer, const lumo::Transfer::Outcome& outcome)
{
    if (!outcome.done()) {
        fail(transfer, outcome.code,
             outcome.text +
                 (outcome.resumes ? "; what arrived is kept: run the same command again to go on" : ""));
        return;
    }
    transfer.phase = Phase::Done;
    // Only the storage box knows what it has.
    if (!transfer.get && transfer.movesFile && !transfer.overwrite)
        transfer.wasFile = outcome.keptFiles.value_or(0) > 0;
    // How much of a folder that existed before is new is not known.
    if (transfer.get && !transfer.wasFolder)
        transfer.bytes = bytesOf(transfer.target);
    view(&ProgressView::ended, transfer);
}

void Run::fail(Transfer& transfer, int code, const std::string& failure)
{
    transfer.phase = Phase::Failed;
    transfer.end = Clock::now();
    transfer.code = code;
    transfer.failure = failure;
    view(&ProgressView::ended, transfer);
}

} // namespace

void runTransfers(std::vector<Transfer> transfers, bool json)
{
    for (std::size_t i = 0; i < transfers.size(); ++i)
        transfers[i].number = i + 1;
    std::optional<Failure> outputFailure;
    {
        const Interrupt interrupt(json);
        Run run(transfers, json);
        for (Transfer& transfer : transfers)
            run.start(transfer);
        outputFailure = run.toEnd();
    }
    const auto failed = std::count_if(transfers.begin(), transfers.end(),
                                      [](const Transfer& one) { return one.phase == Phase::Failed; });
    if (failed > 0 && outputFailure)
        complain(outputFailure->what());
    requireAll(ExitCode::TransferFailed, static_cast<std::size_t>(failed), transfers.size(),
               "did not arrive");
    if (outputFailure)
        throw Failure(*outputFailure);
}

} // namespace cli
