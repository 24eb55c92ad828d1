#ifndef LUMO_CENTRE_CONTENT_BACKUP_H
#define LUMO_CENTRE_CONTENT_BACKUP_H

#include <string>

namespace centre {

/// Writes the database of a data folder to a new file, as it is at one moment, while others use it. What was
/// acknowledged before is in it; the files of the boxes are not. The file appears whole, on the disk and
/// checked, or not at all. Throws Error.
void backUp(const std::string& dataFolder, const std::string& file);

/// Replaces the database of a data folder by such a file, in one transaction; makes the folder if there is
/// none. Nobody may serve the folder. Throws Error for a file that is not a whole backup of this or an
/// earlier version.
void restore(const std::string& dataFolder, const std::string& file);

} // namespace centre

#endif
