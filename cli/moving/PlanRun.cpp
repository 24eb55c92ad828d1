#include "cli/moving/PlanRun.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace cli {

namespace {

bool isMoved(const PlanItem& item)
{
    return !item.folder && (item.action == Action::Add || item.action == Action::Change);
}

std::uint64_t weightOf(const PlanItem& item)
{
    return isMoved(item) ? item.bytes.value_or(0) + 1 : 0;
}

} // namespace

PlanRun::PlanRun(Plan& plan, Mover& mover, const RunOptions& options, Advanced advanced, Failed failed)
    : m_Plan(plan),
      m_Mover(mover),
      m_Options(options),
      m_Advanced(std::move(advanced)),
      m_Failed(std::move(failed))
{
    for (const PlanItem& item : plan.items)
        m_Weight += weightOf(item);
}

RunResult PlanRun::run()
{
    for (const PlanItem& item : m_Plan.items)
        if (item.action == Action::Fail) {
            m_AnyFailed = true;
            m_Failed(item.path, item.reason);
        }
    if (!hasEnded() && !(movesAsWhole() && moveAsWhole()))
        moveEach();
    removeRest();
    RunResult result;
    result.counts = m_Plan.counts();
    result.movedBytes = m_MovedBytes;
    result.lost = m_Lost;
    return result;
}

/// One transfer of a whole tree moves small files in batches, but looks at those that are there, too.
bool PlanRun::movesAsWhole() const
{
    std::size_t moved = 0;
    std::size_t kept = 0;
    for (const PlanItem& item : m_Plan.items) {
        moved += isMoved(item) ? 1 : 0;
        kept += item.action == Action::Keep ? 1 : 0;
    }
    return m_Plan.isWhole && moved > 1 && moved >= kept;
}

bool PlanRun::moveAsWhole()
{
    const bool overwrite = std::any_of(m_Plan.items.begin(), m_Plan.items.end(),
                                       [](const PlanItem& item) { return item.action == Action::Change; });
    const lumo::Transfer::Outcome outcome = m_Mover.moveAll(overwrite, [this](int percent) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (percent > m_Percent && percent < 100)
            m_Advanced(m_Percent = percent);
    });
    m_MovedBytes += outcome.movedBytes.value_or(0);
    return outcome.done();
}

void PlanRun::moveEach()
{
    std::atomic<std::size_t> next{0};
    std::vector<std::thread> threads;
    for (unsigned int i = 1; i < std::min<std::size_t>(m_Options.transfers, m_Plan.items.size()); ++i)
        threads.emplace_back([this, &next] { work(next); });
    work(next);
    for (std::thread& thread : threads)
        thread.join();
}

void PlanRun::work(std::atomic<std::size_t>& next)
{
    for (std::size_t i = next++; i < m_Plan.items.size(); i = next++) {
        PlanItem& item = m_Plan.items[i];
        if (item.action == Action::Remove || !(isMoved(item) || item.action == Action::MakeFolder))
            continue;
        if (hasEnded()) {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            item.action = Action::Fail; // without a message of its own
            continue;
        }
        carryOut(item);
    }
}

void PlanRun::carryOut(PlanItem& item)
{
    try {
        if (item.action == Action::MakeFolder)
            m_Mover.makeFolder(item);
        else
            moveFile(item);
    } catch (const std::exception& error) {
        fail(item, error.what());
    }
}

void PlanRun::moveFile(PlanItem& item)
{
    for (unsigned int attempt = 0;; ++attempt) {
        const lumo::Transfer::Outcome outcome = m_Mover.move(item, item.action == Action::Change);
        m_MovedBytes += outcome.movedBytes.value_or(0);
        if (outcome.done()) {
            advance(item);
            return;
        }
        const bool mayRetry = outcome.mayPass() && !m_Lost && attempt < m_Options.retries;
        if (!mayRetry) {
            m_Lost = m_Lost || outcome.connectionLost();
            return fail(item, outcome.text);
        }
        pause(attempt);
    }
}

void PlanRun::removeRest()
{
    const bool failedBefore = m_AnyFailed;
    const auto isRemoved = [](const PlanItem& item) { return item.action == Action::Remove; };
    for (auto item = std::find_if(m_Plan.items.begin(), m_Plan.items.end(), isRemoved);
         item != m_Plan.items.end(); item = std::find_if(item + 1, m_Plan.items.end(), isRemoved)) {
        if (failedBefore) {
            item->action = Action::Keep;
            continue;
        }
        try {
            m_Mover.remove(*item);
        } catch (const std::exception& error) {
            fail(*item, error.what());
        }
    }
}

void PlanRun::fail(PlanItem& item, const std::string& reason)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_AnyFailed = true;
    item.action = Action::Fail;
    item.reason = reason;
    m_Failed(item.path, reason);
}

void PlanRun::advance(const PlanItem& item)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Done += weightOf(item);
    const int percent =
        static_cast<int>(std::min<std::uint64_t>(99, m_Done * 100 / std::max<std::uint64_t>(1, m_Weight)));
    if (percent > m_Percent)
        m_Advanced(m_Percent = percent);
}

void PlanRun::pause(unsigned int attempt)
{
    constexpr std::chrono::milliseconds kFirst{500};
    std::this_thread::sleep_for(kFirst * (1U << std::min(attempt, 5U)));
}

} // namespace cli
