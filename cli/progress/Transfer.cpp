#include "cli/progress/Transfer.h"

#include "cli/Connection.h"
#include "cli/ExitCode.h"
#include "cli/commands/LocalFiles.h"
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

struct News
{
    enum class Kind
    {
        Began,
        Advanced,
        Ended
    };
    Kind kind = Kind::Advanced;
    std::size_t transfer = 0; ///< its index
    Clock::time_point when = Clock::now();
    int percent = 0;
    int code = 0;               ///< of Ended
    std::string text;           ///< of Began the task's identifier, of Ended what the log told of a failure
    std::string clientTransfer; ///< of Ended
    std::string target;         ///< of Began, like the next
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

/// Hears one task. The copies of its callback are all that keep it alive, and the library drops the last
/// one with the task: that is when the transfer has ended, whatever was told last.
class Listener
{
public:
    Listener(NewsQueue& queue, Journal& journal, const Transfer& transfer)
        : m_Queue(queue),
          m_Journal(journal),
          m_Index(transfer.number - 1),
          m_Folder(transfer.folder),
          m_Target(transfer.target)
    {
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    ~Listener()
    {
        if (m_Began) {
            News news = about(News::Kind::Ended);
            news.percent = m_Percent;
            news.code = m_Code;
            news.text = m_Reason;
            news.clientTransfer = m_ClientTransfer;
            m_Queue.push(std::move(news));
        }
    }

    void tell(const char* taskID, int code, int percent)
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_Began) {
            m_Began = true;
            m_Journal.forget();
            News news = about(News::Kind::Began);
            news.text = taskID;
            const std::string name = m_Folder.empty() ? std::string() : nameOfTask(taskID);
            // A name too long for its record is not the task's either.
            news.target = name.empty() ? m_Target : below(m_Folder, name);
            // Before the task touches it.
            news.wasFile = isFileOrLink(news.target);
            news.wasFolder = isFolder(news.target);
            m_Queue.push(std::move(news));
        }
        if (code != 0 && m_Code == 0) {
            m_Code = code;
            // A task that fails tells it on the thread that has just logged why.
            const Reason reason = m_Journal.lastReason();
            m_Reason = reason.kind == Reason::Kind::None ? std::string() : describe(reason);
            m_ClientTransfer = m_Journal.clientTransfer();
        }
        if (code == 0 && percent > m_Percent) {
            m_Percent = percent;
            m_ClientTransfer = m_Journal.clientTransfer();
            News news = about(News::Kind::Advanced);
            news.percent = percent;
            m_Queue.push(std::move(news));
        }
    }

private:
    News about(News::Kind kind) const
    {
        News news;
        news.kind = kind;
        news.transfer = m_Index;
        return news;
    }

    NewsQueue& m_Queue;
    Journal& m_Journal;
    const std::size_t m_Index;
    const std::string m_Folder;
    const std::string m_Target;
    std::mutex m_Mutex;
    bool m_Began = false;
    int m_Percent = 0;
    int m_Code = 0;
    std::string m_Reason;
    std::string m_ClientTransfer;
};

class Run
{
public:
    Run(std::vector<Transfer>& transfers, Session& session)
        : m_Transfers(transfers),
          m_Journal(session.journal),
          m_View(ProgressView::make(session.json)),
          m_Totals(transfers)
    {
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /// Tasks that still run when one can't be started would tell a queue that is gone.
    ~Run()
    {
        while (m_Running > 0) {
            const auto news = m_Queue.next(std::chrono::hours(1));
            m_Running -= news && news->kind == News::Kind::Ended ? 1 : 0;
        }
    }

    void start(Transfer& transfer);
    /// Returns the first failure of the output, which stops no transfer.
    std::optional<Failure> toEnd();

private:
    template <class... Told>
    void tell(void (ProgressView::*what)(const Told&...), const Told&... told);
    void show(std::chrono::milliseconds patience);
    void take(const News& news);
    void finish(Transfer& transfer, const News& news);
    void fail(Transfer& transfer, int code, const std::string& failure);

    std::vector<Transfer>& m_Transfers;
    Journal& m_Journal;
    std::unique_ptr<ProgressView> m_View;
    Totals m_Totals;
    NewsQueue m_Queue;
    std::size_t m_Running = 0;
    Clock::time_point m_Refreshed;
    std::optional<Failure> m_OutputFailure;
};

template <class... Told>
void Run::tell(void (ProgressView::*what)(const Told&...), const Told&... told)
{
    try {
        ((*m_View).*what)(told...);
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
    m_Journal.forget();
    bool started = false;
    {
        const auto listener = std::make_shared<Listener>(m_Queue, m_Journal, transfer);
        started = transfer.start([listener](const char* taskID, int, int code, int percent) {
            listener->tell(taskID, code, percent);
        });
    }
    if (started) {
        ++m_Running;
        show(std::chrono::milliseconds(0));
        return;
    }
    transfer.begin = Clock::now();
    fail(transfer, 0, transfer.refusal());
}

std::optional<Failure> Run::toEnd()
{
    while (m_Running > 0)
        show(m_View->interval());
    tell(&ProgressView::finished, m_Totals);
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
        tell(&ProgressView::refresh, m_Totals);
    }
}

void Run::take(const News& news)
{
    Transfer& transfer = m_Transfers[news.transfer];
    switch (news.kind) {
    case News::Kind::Began:
        transfer.phase = Phase::Running;
        transfer.begin = news.when;
        transfer.taskID = news.text;
        if (!transfer.folder.empty()) {
            transfer.wasFile = news.wasFile;
            transfer.wasFolder = news.wasFolder;
            transfer.target = news.target;
        }
        tell(&ProgressView::began, transfer);
        break;
    case News::Kind::Advanced:
        transfer.percent = news.percent;
        tell(&ProgressView::advanced, transfer, m_Totals);
        break;
    case News::Kind::Ended:
        --m_Running;
        finish(transfer, news);
        break;
    }
}

void Run::finish(Transfer& transfer, const News& news)
{
    transfer.end = news.when;
    if (news.code != 0) {
        const std::string reason =
            transfer.tellsProgress
                ? m_Journal.clientReason(news.clientTransfer)
                : m_Journal.clientReason(news.code, news.text.substr(news.text.rfind('/') + 1));
        fail(transfer, news.code, failureText(news.code, reason.empty() ? news.text : reason));
        return;
    }
    if (news.percent < 100) {
        fail(transfer, kTransferFailed, "the transfer ended without a word");
        return;
    }
    transfer.phase = Phase::Done;
    // What stands on a storage box it alone knows.
    if (!transfer.get && transfer.movesFile && !transfer.overwrite)
        transfer.wasFile = m_Journal.clientKept(news.clientTransfer);
    // How much has come into a folder that was there is not known.
    if (transfer.get && !transfer.wasFolder)
        transfer.bytes = bytesOf(transfer.target);
    tell(&ProgressView::ended, transfer);
}

void Run::fail(Transfer& transfer, int code, const std::string& failure)
{
    transfer.phase = Phase::Failed;
    transfer.end = Clock::now();
    transfer.code = code;
    transfer.failure = failure;
    tell(&ProgressView::ended, transfer);
}

} // namespace

void runTransfers(std::vector<Transfer> transfers, Session& session)
{
    for (std::size_t i = 0; i < transfers.size(); ++i)
        transfers[i].number = i + 1;
    std::optional<Failure> outputFailure;
    {
        const Interrupt interrupt(session.json);
        Run run(transfers, session);
        for (Transfer& transfer : transfers)
            run.start(transfer);
        outputFailure = run.toEnd();
    }
    const auto failed = std::count_if(transfers.begin(), transfers.end(),
                                      [](const Transfer& one) { return one.phase == Phase::Failed; });
    if (failed > 0) {
        if (outputFailure)
            complain(outputFailure->what());
        // That of a single transfer has been said.
        throw Failure(ExitCode::TransferFailed, transfers.size() == 1 ? std::string()
                                                                      : std::to_string(failed) + " of " +
                                                                            std::to_string(transfers.size()) +
                                                                            " did not arrive");
    }
    if (outputFailure)
        throw Failure(*outputFailure);
}

} // namespace cli
