#ifndef LUMO_CLI_MOVING_FILTER_H
#define LUMO_CLI_MOVING_FILTER_H

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace cli {

/// Whether a pattern matches a path: `*` is any text without "/", `**` any text, `?` a character but "/",
/// `[a-z]` one of a set. A pattern matches the end of a path from the begin of a name on; with a leading "/"
/// the whole path.
bool matchesGlob(const std::string& pattern, const std::string& path);

/// Which files and folders of a tree take part in a transfer. Rules of a filter file come first, in their
/// order; the first that matches decides. Then a path that an exclusion matches is out. Then, if there are
/// inclusions, a file is in only if one matches.
class Filter
{
public:
    void include(const std::string& pattern);
    void exclude(const std::string& pattern);
    /// Reads rules, a line each: "+ PATTERN" or "- PATTERN"; "#" begins a comment. Throws Failure (WrongUse).
    void read(const std::string& file);

    /// The smallest file that takes part, in bytes.
    std::uint64_t minimum = 0;
    /// Local files that were changed earlier do not take part, in seconds since 1970.
    std::int64_t newerThan = std::numeric_limits<std::int64_t>::min();

    bool isEmpty() const;
    /// Whether a folder is walked, with everything below it.
    bool admitsFolder(const std::string& path) const;
    /// Whether a file takes part whose folders do.
    bool admitsFile(const std::string& path) const;
    /// Whether empty folders are made.
    bool keepsEmptyFolders() const { return m_Includes.empty(); }

private:
    struct Rule
    {
        bool includes;
        std::string pattern;
    };

    std::vector<Rule> m_Rules; ///< of filter files
    std::vector<std::string> m_Includes;
    std::vector<std::string> m_Excludes;
};

} // namespace cli

#endif
