#include "components/bulkhaul/files/FlushTogether.h"

#include "components/bulkhaul/files/FileFailure.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>

namespace bulkhaul {

namespace {

constexpr std::size_t kFewFiles = 8;
constexpr std::uint64_t kMuchToWrite = std::uint64_t(64) * 1024; // KiB
constexpr std::array<decltype(statfs::f_type), 3> kKnownFileSystems = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC,
                                                                       BTRFS_SUPER_MAGIC};

bool areOnOneDevice(const std::vector<const PartialFile*>& files)
{
    return std::all_of(files.begin(), files.end(),
                       [&](const PartialFile* file) { return file->device() == files.front()->device(); });
}

/// Whether a flush of the file's whole file system is known to be one of the disk, too, as a network's is
/// not.
bool isKnown(const PartialFile& file)
{
    struct statfs status;
    return ::fstatfs(file.get(), &status) == 0 &&
           std::find(kKnownFileSystems.begin(), kKnownFileSystems.end(), status.f_type) !=
               kKnownFileSystems.end();
}

/// Whether the machine has much data in memory that is not on its disks yet. A flush of a file system waits
/// for all of it.
bool isMuchToWrite()
{
    std::ifstream report("/proc/meminfo");
    std::uint64_t sum = 0;
    std::uint64_t amount = 0; // KiB
    bool found = false;
    for (std::string key, unit; report >> key >> amount; std::getline(report, unit))
        if (key == "Dirty:" || key == "Writeback:") {
            sum += amount;
            found = true;
        }
    return !found || sum > kMuchToWrite;
}

} // namespace

void flushTogether(const std::vector<const PartialFile*>& files)
{
    if (files.size() >= kFewFiles && areOnOneDevice(files) && isKnown(*files.front()) && !isMuchToWrite()) {
        if (::syncfs(files.front()->get()) != 0)
            throwErrno(haulbox::NOT_WRITABLE, "the file system");
        return;
    }
    for (const PartialFile* file : files)
        file->flush();
}

} // namespace bulkhaul
