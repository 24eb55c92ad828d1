#ifndef LUMO_BULKHAUL_FILES_TREEWALK_H
#define LUMO_BULKHAUL_FILES_TREEWALK_H

#include "components/bulkhaul/files/Folder.h"

#include <cstdint>
#include <functional>
#include <string>

namespace bulkhaul {

/// A file or folder below the root of a tree.
struct TreeItem
{
    std::string below; ///< its path from the root
    bool folder;
    std::uint64_t size;  ///< of a file, in bytes
    std::string version; ///< of a file, as SourceFile gives it; only with Strange::Skip
};

/// Whether `first` is visited before `second`.
bool comesBefore(const std::string& first, const std::string& second);

/// How to treat links, special files and names that are not UTF-8.
enum class Strange
{
    Skip, ///< as if they did not exist
    Fail  ///< a link to a file counts as the file; anything else throws FileFailure
};

/// Visits everything below `root` until `visit` returns false: a folder before its content, otherwise in the
/// order of names. Unless `after` is empty, it begins after that path. Memory grows with the largest folder,
/// not with the tree. Returns false when `visit` stopped it. Throws FileFailure.
bool walkTree(const Folder& root, Strange strange, const std::string& after,
              const std::function<bool(const TreeItem&)>& visit);

} // namespace bulkhaul

#endif
