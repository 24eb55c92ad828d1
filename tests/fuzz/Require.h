#ifndef LUMO_TESTS_FUZZ_REQUIRE_H
#define LUMO_TESTS_FUZZ_REQUIRE_H

#include <cstdlib>
#include <filesystem>
#include <string>

/// Ends the program as a finding when a property does not hold.
inline void require(bool property)
{
    if (!property)
        std::abort();
}

/// Makes an empty folder in TMPDIR, which scripts/fuzz makes in memory and removes.
inline std::string makeFolder()
{
    std::string folder = (std::filesystem::temp_directory_path() / "lumo-fuzz-XXXXXX").string();
    require(::mkdtemp(folder.data()) != nullptr);
    return folder;
}

#endif
