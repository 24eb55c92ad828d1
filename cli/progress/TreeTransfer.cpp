#include "cli/progress/TreeTransfer.h"

#include "lumo/transfer/TransferCodes.h"

#include <exception>
#include <thread>

namespace cli {

namespace {

class JoinedThread
{
public:
    explicit JoinedThread(std::thread thread) : m_Thread(std::move(thread)) {}
    JoinedThread(const JoinedThread&) = delete;
    JoinedThread& operator=(const JoinedThread&) = delete;
    ~JoinedThread() { m_Thread.join(); }

private:
    std::thread m_Thread;
};

lumo::Transfer::Outcome outcomeOf(const RunResult& result)
{
    lumo::Transfer::Outcome outcome;
    outcome.movedBytes = result.movedBytes;
    if (result.counts.failed > 0) {
        outcome.code = transfercodes::kTransferFailed;
        outcome.text = textOf(result.counts);
        outcome.resumes = result.lost;
    }
    return outcome;
}

void runTree(TreeReport& report, const lumo::Transfer::Observer& observer, const TreeWork& work)
{
    lumo::Transfer::Progress progress;
    observer(progress);
    try {
        const RunResult result = work(
            [&](int percent) {
                progress.percent = percent;
                observer(progress);
            },
            [&](const std::string& path, const std::string& reason) {
                report.add({path, reason});
                observer(progress);
            });
        report.setResult(result);
        progress.outcome = outcomeOf(result);
    } catch (const std::exception& error) {
        progress.outcome = lumo::Transfer::Outcome();
        progress.outcome->code = transfercodes::kTransferFailed;
        progress.outcome->text = error.what();
    }
    if (progress.outcome->done())
        progress.percent = 100;
    observer(progress);
}

} // namespace

void TreeReport::add(Problem problem)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Problems.push_back(std::move(problem));
}

std::vector<TreeReport::Problem> TreeReport::takeProblems()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return std::exchange(m_Problems, {});
}

void TreeReport::setResult(const RunResult& result)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Result = result;
}

RunResult TreeReport::result() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Result;
}

void moveAsTree(Transfer& transfer, std::shared_ptr<std::mutex> turn, TreeWork work)
{
    transfer.tree = std::make_shared<TreeReport>();
    transfer.reportsProgress = true;
    transfer.start = [report = transfer.tree, turn = std::move(turn),
                      work = std::move(work)](const lumo::Transfers::Options& options) -> StartedTransfer {
        std::thread thread([report, turn, work, observer = options.observer] {
            const std::lock_guard<std::mutex> lock(*turn);
            runTree(*report, observer, work);
        });
        return std::make_shared<JoinedThread>(std::move(thread));
    };
}

} // namespace cli
