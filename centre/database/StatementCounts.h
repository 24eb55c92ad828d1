#ifndef LUMO_CENTRE_DATABASE_STATEMENTCOUNTS_H
#define LUMO_CENTRE_DATABASE_STATEMENTCOUNTS_H

#include <atomic>
#include <cstdint>

namespace centre {

/// The statements that this process has run on all its databases. Safe from any thread.
struct StatementCounts
{
    std::atomic<std::uint64_t> count{0};
    std::atomic<std::uint64_t> nanoseconds{0}; ///< for which they ran, with what was done with their rows
};

inline StatementCounts& statementCounts()
{
    static StatementCounts counts;
    return counts;
}

} // namespace centre

#endif
