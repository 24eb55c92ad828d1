#ifndef LUMO_CENTRE_BASE_PATH_H
#define LUMO_CENTRE_BASE_PATH_H

#include <string>

namespace centre {

/// Whether a text is an absolute path in UTF-8, no longer than the system takes, without empty components,
/// "." and "..". All paths of storage boxes are such paths.
bool isPlainAbsolutePath(const std::string& path);

// The functions below take plain absolute paths.

/// The folder above a path; of "/", "/" itself.
std::string folderAbove(const std::string& path);
/// The last component of a path; empty for "/".
std::string lastName(const std::string& path);

/// Whether a path is `root` or lies in it.
bool isAtOrBelow(const std::string& root, const std::string& path);
/// Whether one of two paths is the other or lies in it; never if one is empty.
bool overlap(const std::string& one, const std::string& other);

/// The part of a path after `root`, which holds it, without the separator; empty for the root itself.
std::string pathBelow(const std::string& root, const std::string& path);

} // namespace centre

#endif
