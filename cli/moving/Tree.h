#ifndef LUMO_CLI_MOVING_TREE_H
#define LUMO_CLI_MOVING_TREE_H

#include "cli/moving/Filter.h"

#include "lumo/client/BoxPlace.h"
#include "lumo/client/Catalogue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cli {

/// A file or folder on one side of a transfer.
struct TreeItem
{
    std::string path; ///< from the root, with "/" between names; empty: the file that the root is
    bool folder = false;
    std::optional<std::uint64_t> bytes; ///< of a file, where it is known
    std::string version;                ///< of a file on a box
    lumo::FileId file;    ///< of a file whose name is too long for its record; `path` has its identifier then
    bool skipped = false; ///< the filter leaves it out, with all below it
    std::string problem;  ///< why it can't be moved; empty: it can
};

/// All that is on one side, a folder before its content.
struct Tree
{
    std::vector<TreeItem> items;
    /// Whether the list is whole: all folders could be read.
    bool whole = true;
    /// Whether there is anything at the root.
    bool exists = true;
    /// Whether the filter lets empty folders take part.
    bool emptyFolders = true;
};

/// What a filter leaves out is not walked, and is marked. Partial files of transfers are left out of all
/// trees.

/// Lists a local file or folder. A link to a file counts as the file, unless links are wanted as they are, as
/// at a target; what else can't be moved has its problem.
Tree localTree(const std::string& root, const Filter& filter);

/// Lists what a storage box has. Throws lumo::Error when that did not arrive whole; a place that is not there
/// is an empty tree.
Tree boxTree(const lumo::BoxPlace& place, const Filter& filter);

/// Lists what the catalogue has in a folder, with the sizes that the box reports. A folder whose list fails
/// has its problem.
Tree catalogueTree(const lumo::Catalogue& catalogue, lumo::FolderId folder, const Tree& onBox,
                   const Filter& filter);

} // namespace cli

#endif
