#ifndef LUMO_CLI_COMMANDS_TREEOPTIONS_H
#define LUMO_CLI_COMMANDS_TREEOPTIONS_H

#include "cli/moving/Filter.h"
#include "cli/moving/PlanRun.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace cli {

/// What get, put, sync and check have in common: which files of a folder take part, and how they are moved.
struct TreeOptions
{
    Filter filter; ///< set by `apply`
    RunOptions run;

    void addFilter(CLI::App& app);
    void addRun(CLI::App& app);
    /// Throws Failure (WrongUse) for what is not valid. `localSource`: the files have times to judge by.
    void apply(bool localSource);

private:
    std::vector<std::string> m_Includes;
    std::vector<std::string> m_Excludes;
    std::vector<std::string> m_FilterFiles;
    std::string m_MinSize;
    std::string m_Newer;
};

/// Bytes of a text such as "512", "10k", "1.5M" or "2G", of 1024 each. Throws Failure (WrongUse).
std::uint64_t parseBytes(const std::string& text);

} // namespace cli

#endif
