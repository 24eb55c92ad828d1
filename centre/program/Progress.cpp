#include "centre/program/Progress.h"

#include <iostream>
#include <unistd.h>
#include <utility>

namespace centre {

Progress::Progress(std::string noun, std::string plural)
    : m_Noun(std::move(noun)), m_Plural(std::move(plural)), m_IsTerminal(::isatty(STDERR_FILENO) != 0)
{
}

Progress::~Progress()
{
    clear();
}

void Progress::show(std::uint64_t count)
{
    if (!m_IsTerminal)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now - m_LastShown < std::chrono::milliseconds(200))
        return;
    std::cerr << "\rlumo-centre: " << count << " " << (count == 1 ? m_Noun : m_Plural) << std::flush;
    m_LastShown = now;
    m_Shown = true;
}

void Progress::clear()
{
    if (m_Shown)
        std::cerr << "\r\033[K" << std::flush;
    m_Shown = false;
}

std::function<void(std::uint64_t)> Progress::function()
{
    return [this](std::uint64_t count) { show(count); };
}

} // namespace centre
