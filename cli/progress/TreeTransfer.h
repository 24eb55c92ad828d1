#ifndef LUMO_CLI_PROGRESS_TREETRANSFER_H
#define LUMO_CLI_PROGRESS_TREETRANSFER_H

#include "cli/moving/PlanRun.h"
#include "cli/progress/Transfer.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace cli {

/// What the thread that moves a tree reports beside its progress. Safe from any thread.
class TreeReport
{
public:
    struct Problem
    {
        std::string path;
        std::string reason;
    };

    void add(Problem problem);
    /// The problems since the last call.
    std::vector<Problem> takeProblems();

    void setResult(const RunResult& result);
    RunResult result() const;

private:
    mutable std::mutex m_Mutex;
    std::vector<Problem> m_Problems;
    RunResult m_Result;
};

/// Moves a tree: makes the plan and carries it out. Throws lumo::Error or Failure when nothing was moved.
using TreeWork = std::function<RunResult(const PlanRun::Advanced&, const PlanRun::Failed&)>;

/// Sets `transfer` to move a tree on a thread of its own; of those with the same `turn` one runs at a time.
void moveAsTree(Transfer& transfer, std::shared_ptr<std::mutex> turn, TreeWork work);

} // namespace cli

#endif
