#ifndef LUMO_CLI_MOVING_PLAN_H
#define LUMO_CLI_MOVING_PLAN_H

#include "cli/moving/Tree.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace cli {

/// What happens, or has happened, to a file or folder of a transfer.
enum class Action
{
    Add,        ///< it is new at the target
    Change,     ///< it replaces another one
    Keep,       ///< the target has it
    Skip,       ///< a filter leaves it out
    Remove,     ///< the source does not have it
    MakeFolder, ///< a folder is made that no file is moved into
    Fail
};

/// How to treat a file that exists on both sides.
enum class Compare
{
    Existence, ///< it is kept
    Nothing,   ///< it is replaced
    Size,      ///< it is replaced if the sizes differ
    Content    ///< and if the contents do
};

struct PlanItem
{
    std::string path;
    bool folder = false;
    std::optional<std::uint64_t> bytes; ///< of the source
    Action action = Action::Keep;
    std::string reason;  ///< of a failure
    lumo::FileId file{}; ///< as TreeItem has it
};

/// How many files there are of each kind; folders are counted where they are removed or fail.
struct Counts
{
    std::size_t added = 0, changed = 0, kept = 0, skipped = 0, removed = 0, failed = 0;

    void count(const PlanItem& item);
    std::size_t all() const { return added + changed + kept + skipped + removed + failed; }
};

/// "12 new, 3 changed, 1 failed": what is not 0.
std::string textOf(const Counts& counts);

/// What to do to make a target like a source.
struct Plan
{
    std::vector<PlanItem> items; ///< a folder before its content; what is removed comes last, content first
    /// Whether all of the source is to be moved, or is there, so that it may move as a whole.
    bool isWhole = true;

    Counts counts() const;
};

/// Returns for each of a list of paths whether source and target have the same content.
using SameContent = std::function<std::vector<bool>(const std::vector<std::size_t>& sourceItems)>;

/// Compares two sides. `remove` has what only the target has removed, unless the source's list is not whole:
/// nothing is removed then. `sameContent` is asked once, for the items of the source that need it. A folder
/// that files are moved into is no item of its own.
Plan makePlan(const Tree& source, const Tree& target, Compare compare, bool remove,
              const SameContent& sameContent = {});

} // namespace cli

#endif
