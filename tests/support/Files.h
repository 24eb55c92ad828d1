#ifndef LUMO_TESTS_SUPPORT_FILES_H
#define LUMO_TESTS_SUPPORT_FILES_H

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>

/// Writes a file with its folders.
inline void writeFile(const std::filesystem::path& path, const std::string& bytes)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string readFile(const std::filesystem::path& path)
{
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

/// The bytes themselves, or of many their number and hash: a mismatch must not print megabytes.
inline std::string summary(const std::string& bytes)
{
    if (bytes.size() < 100)
        return bytes;
    return std::to_string(bytes.size()) + " bytes, hash " + std::to_string(std::hash<std::string>()(bytes));
}

inline std::string summaryOf(const std::filesystem::path& path)
{
    return summary(readFile(path));
}

/// What lies below a folder: each path with the summary of its bytes, a folder with "/" behind it.
inline std::map<std::string, std::string> treeOf(const std::filesystem::path& root)
{
    std::map<std::string, std::string> tree;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const std::string below = std::filesystem::relative(entry.path(), root).string();
        if (entry.is_directory())
            tree[below + "/"];
        else
            tree[below] = summaryOf(entry.path());
    }
    return tree;
}

#endif
