#include "cli/progress/Transfer.h"

#include "cli/base/ExitCode.h"
#include "cli/base/LocalFiles.h"
#include "cli/output/Output.h"
#include "cli/progress/Interrupt.h"
#include "cli/progress/ProgressView.h"
#include "cli/progress/TreeTransfer.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

namespace cli {

namespace {

using Phase = Transfer::Phase;
using Clock = Transfer::Clock;

/// What the observer of a transfer reports, with what it found at the target.
struct News
{
    std::size_t transfer; ///< its index
    std::string target;
    bool wasLookedAt = false;
    bool wasFile = false;
    bool wasFolder = false;
    lumo::Transfer::Progress progress{};
    Clock::time_point when{};
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

/// Looks at the target of a get, before the transfer touches it.
void lookAtTarget(News& news, const std::string& folder, const std::string& taskID)
{
    if (folder.empty())
        return;
    const std::string name = nameOfTask(taskID);
    // The task does not know a name that is too long for its record.
    if (!name.empty())
        news.target = below(folder, name);
    news.wasFile = isFileOrLink(news.target);
    news.wasFolder = isFolder(news.target);
}

/// The observer of a transfer, whose copies share what they know of it.
lumo::Transfer::Observer observerOf(const Transfer& transfer, NewsQueue& queue)
{
    const auto news = std::make_shared<News>(News{transfer.number - 1, transfer.target});
    return [&queue, news, folder = transfer.folder](const lumo::Transfer::Progress& progress) {
        if (!std::exchange(news->wasLookedAt, true))
            lookAtTarget(*news, folder, progress.task);
        news->progress = progress;
        news->when = Clock::now();
        queue.push(*news);
    };
}

class Run
{
public:
    Run(std::vector<Transfer>& transfers, bool json)
        : m_Transfers(transfers), m_View(ProgressView::make(json)), m_Totals(transfers)
    {
    }

    void start(Transfer& transfer)
    {
        try {
            m_Started.push_back(transfer.start({transfer.overwrite, observerOf(transfer, m_Queue)}));
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

    /// Returns the first failure of the output, which stops no transfer.
    std::optional<Failure> toEnd()
    {
        while (m_Running > 0)
            show(m_View->interval());
        view(&ProgressView::finished, m_Totals);
        return m_OutputFailure;
    }

private:
    template <class... Arguments>
    void view(void (ProgressView::*call)(const Arguments&...), const Arguments&... arguments)
    {
        try {
            ((*m_View).*call)(arguments...);
        } catch (const Failure& failure) {
            const std::string reason = failure.what();
            if (!m_OutputFailure)
                m_OutputFailure.emplace(failure.code(),
                                        reason.empty() ? "nobody reads the output any more" : reason);
        }
    }

    void show(std::chrono::milliseconds patience)
    {
        for (auto news = m_Queue.next(patience); news; news = m_Queue.next(std::chrono::milliseconds(0)))
            take(*news);
        if (Clock::now() - m_Refreshed >= m_View->interval()) {
            m_Refreshed = Clock::now();
            m_Totals.sample();
            view(&ProgressView::refresh, m_Totals);
        }
    }

    void take(const News& news)
    {
        Transfer& transfer = m_Transfers[news.transfer];
        const lumo::Transfer::Progress& progress = news.progress;
        if (transfer.phase == Phase::Waiting)
            begin(transfer, news);
        if (transfer.tree)
            for (const TreeReport::Problem& problem : transfer.tree->takeProblems())
                view(&ProgressView::fileFailed, transfer, problem.path, problem.reason);
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

    void begin(Transfer& transfer, const News& news)
    {
        transfer.phase = Phase::Running;
        transfer.begin = news.when;
        transfer.taskID = news.progress.task;
        transfer.target = news.target;
        transfer.wasFile = news.wasFile;
        transfer.wasFolder = news.wasFolder;
        view(&ProgressView::began, transfer);
    }

    void finish(Transfer& transfer, const lumo::Transfer::Outcome& outcome)
    {
        if (!outcome.done()) {
            const char* const hint =
                outcome.resumes ? "; what arrived is kept: run the same command again to go on" : "";
            fail(transfer, outcome.code, outcome.text + hint);
            return;
        }
        transfer.phase = Phase::Done;
        // Only the storage box knows what it has.
        if (!transfer.get && transfer.movesFile && !transfer.overwrite)
            transfer.wasFile = outcome.keptFiles.value_or(0) > 0;
        if (transfer.tree) {
            transfer.bytes = outcome.movedBytes;
            view(&ProgressView::ended, transfer);
            return;
        }
        // How much of a folder that existed before is new is not known.
        if (transfer.get && !transfer.wasFolder)
            transfer.bytes = outcome.movedBytes && isFolder(transfer.target) ? *outcome.movedBytes
                                                                             : bytesOf(transfer.target);
        view(&ProgressView::ended, transfer);
    }

    void fail(Transfer& transfer, int code, const std::string& failure)
    {
        transfer.phase = Phase::Failed;
        transfer.end = Clock::now();
        transfer.code = code;
        transfer.failure = failure;
        view(&ProgressView::ended, transfer);
    }

    std::vector<Transfer>& m_Transfers;
    std::unique_ptr<ProgressView> m_View;
    Totals m_Totals;
    NewsQueue m_Queue;
    std::size_t m_Running = 0;
    Clock::time_point m_Refreshed;
    std::optional<Failure> m_OutputFailure;
    std::vector<StartedTransfer> m_Started; ///< last: while they live, the library pushes to the queue
};

} // namespace

void runTransfers(std::vector<Transfer> transfers, bool json)
{
    for (std::size_t i = 0; i < transfers.size(); ++i)
        transfers[i].number = i + 1;
    std::optional<Failure> outputFailure;
    {
        const Interrupt interrupt(Interrupt::Then::EndTransfers, json);
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
