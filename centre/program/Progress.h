#ifndef LUMO_CENTRE_PROGRAM_PROGRESS_H
#define LUMO_CENTRE_PROGRAM_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace centre {

/// Shows a count on a line of standard error, if that is a terminal.
class Progress
{
public:
    /// Counts what the nouns say, such as "entry" and "entries".
    Progress(std::string noun, std::string plural);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(std::uint64_t count);
    /// Clears the line, for other output.
    void clear();
    std::function<void(std::uint64_t)> function();

private:
    const std::string m_Noun;
    const std::string m_Plural;
    const bool m_IsTerminal;
    std::chrono::steady_clock::time_point m_LastShown = std::chrono::steady_clock::now();
    bool m_Shown = false;
};

} // namespace centre

#endif
