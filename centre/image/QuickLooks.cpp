#include "centre/image/QuickLooks.h"

#include "components/bulkhaul/files/Chunks.h"
#include "components/bulkhaul/files/FileFailure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace centre {

namespace {

constexpr std::size_t kDigestSize = std::tuple_size<bulkhaul::Digest>::value;
constexpr std::uint64_t kBlock = 4096;        // what a file takes of the disk is a multiple
constexpr off_t kLargestPicture = 17 << 20;   // with its digest; an image process answers less
constexpr std::chrono::seconds kUsedAnew{60}; // the time of use is not written more often
constexpr std::chrono::milliseconds kLookForMadeOrCanceled{100};

std::uint64_t onDisk(std::uint64_t bytes)
{
    return (bytes + kBlock - 1) / kBlock * kBlock;
}

/// Returns the media type by the first bytes: the process that made the picture may be in the hands of the
/// image.
std::string mediaTypeOf(const std::string& data)
{
    if (data.rfind("\x89PNG\r\n\x1a\n", 0) == 0)
        return "image/png";
    if (data.rfind("\xff\xd8\xff", 0) == 0)
        return "image/jpeg";
    throw refusal("the quick look that was made is not a picture");
}

bulkhaul::FileHandle openFolder(const std::string& path)
{
    if (path.empty())
        return {};
    std::error_code error;
    const bool made = std::filesystem::create_directories(path, error);
    bulkhaul::FileHandle folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || (made && ::fchmod(folder.get(), S_IRWXU) != 0))
        throw refusal("the folder of quick looks, " + path + ", can't be used: " + std::strerror(errno));
    return folder;
}

constexpr char kTemporary[] = "new-";

/// A name that no other thread or process uses now.
std::string temporaryName()
{
    std::random_device random;
    return kTemporary + std::to_string(random()) + "-" + std::to_string(random());
}

/// Whether this program gave a file its name. No other file of the folder is touched.
bool isOurs(const std::string& name)
{
    return name.rfind(kTemporary, 0) == 0 ||
           (name.size() == 2 * kDigestSize &&
            name.find_first_not_of("0123456789abcdef") == std::string::npos);
}

struct KeptPicture
{
    std::string name;
    timespec used;
    std::uint64_t bytes;
};

std::vector<KeptPicture> picturesIn(int folder)
{
    std::vector<KeptPicture> pictures;
    const int again = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(again < 0 ? nullptr : ::fdopendir(again), &::closedir);
    while (const dirent* entry = entries ? ::readdir(entries.get()) : nullptr) {
        struct stat status = {};
        if (isOurs(entry->d_name) && ::fstatat(folder, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode))
            pictures.push_back(
                {entry->d_name, status.st_mtim, onDisk(static_cast<std::uint64_t>(status.st_size))});
    }
    return pictures;
}

bool writeAll(int file, const std::string& bytes)
{
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t written = ::write(file, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        done += static_cast<std::size_t>(written);
    }
    return true;
}

/// Has a picture's time of use be now, if it is not by a minute.
void markUsed(int file, const struct stat& status)
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    if (now - std::chrono::seconds(status.st_mtim.tv_sec) >= kUsedAnew)
        ::futimens(file, nullptr);
}

} // namespace

QuickLooks::QuickLooks(ImageReader& images, QuickLookOptions options)
    : m_Images(images), m_Options(std::move(options)), m_Folder(openFolder(m_Options.folder))
{
}

std::string QuickLooks::tag(const bulkhaul::Folder& folder, const std::string& file) const
{
    struct stat status = {};
    const bulkhaul::FileHandle image = openRegularFile(folder, file);
    if (::fstat(image.get(), &status) != 0)
        bulkhaul::throwErrno(haulbox::UNREADABLE, file);
    std::string key = std::to_string(m_Options.longestSide);
    for (const auto value :
         {static_cast<std::int64_t>(status.st_dev), static_cast<std::int64_t>(status.st_ino),
          static_cast<std::int64_t>(status.st_size), static_cast<std::int64_t>(status.st_mtim.tv_sec),
          static_cast<std::int64_t>(status.st_mtim.tv_nsec),
          static_cast<std::int64_t>(status.st_ctim.tv_sec), // programs can't choose it
          static_cast<std::int64_t>(status.st_ctim.tv_nsec)})
        key += "," + std::to_string(value);
    return bulkhaul::toHex(bulkhaul::digestOf(key));
}

QuickLook QuickLooks::get(const bulkhaul::Folder& folder, const std::string& file,
                          const IsCanceled& isCanceled)
{
    const std::string tag = this->tag(folder, file);
    QuickLook found;
    if (find(tag, found))
        return found;
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        while (!m_Made.wait_for(lock, kLookForMadeOrCanceled, [&] { return m_Making.count(tag) == 0; }))
            requireNotCanceled(isCanceled);
        m_Making.insert(tag);
    }
    const auto end = [&] {
        {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            m_Making.erase(tag);
        }
        m_Made.notify_all();
    };
    try {
        if (!find(tag, found)) // another thread may have made it meanwhile
            found = make(folder, file, tag, isCanceled);
    } catch (...) {
        end();
        throw;
    }
    end();
    return found;
}

QuickLook QuickLooks::make(const bulkhaul::Folder& folder, const std::string& file, const std::string& tag,
                           const IsCanceled& isCanceled)
{
    QuickLook made;
    made.data = m_Images.quickLook(folder, file, m_Options.longestSide, isCanceled).data();
    made.mediaType = mediaTypeOf(made.data);
    if (m_Folder && this->tag(folder, file) == tag) // else the file changed meanwhile
        keep(tag, made.data);
    return made;
}

bool QuickLooks::find(const std::string& tag, QuickLook& found) const
{
    if (!m_Folder)
        return false;
    const bulkhaul::FileHandle file(::openat(m_Folder.get(), tag.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    if (!file || ::fstat(file.get(), &status) != 0 || status.st_size <= off_t(kDigestSize) ||
        status.st_size > kLargestPicture)
        return false;
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    if (::pread(file.get(), bytes.data(), bytes.size(), 0) != status.st_size)
        return false;
    const std::size_t size = bytes.size() - kDigestSize;
    if (!bulkhaul::isDigest(bytes.substr(size), bulkhaul::digestOf(bytes.data(), size)))
        return false;
    markUsed(file.get(), status);
    bytes.resize(size);
    found.mediaType = mediaTypeOf(bytes);
    found.data = std::move(bytes);
    return true;
}

/// Keeps a picture with its digest after it, so that it is whole without a flush. A failure, as of a full
/// disk, only means that it is made again.
void QuickLooks::keep(const std::string& tag, const std::string& data)
{
    const std::string name = temporaryName();
    const bulkhaul::FileHandle file(
        ::openat(m_Folder.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file || !writeAll(file.get(), data + bulkhaul::toBytes(bulkhaul::digestOf(data))) ||
        ::renameat(m_Folder.get(), name.c_str(), m_Folder.get(), tag.c_str()) != 0) {
        ::unlinkat(m_Folder.get(), name.c_str(), 0);
        return;
    }
    constexpr std::uint64_t kPart = 16;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        const std::uint64_t added = onDisk(data.size() + kDigestSize);
        const bool isFirst = m_SinceLastLook == 0; // others may have filled the folder
        m_SinceLastLook += added;
        if (!isFirst && m_SinceLastLook <= m_Options.bytes / kPart)
            return;
        m_SinceLastLook = added;
    }
    removeOldest();
}

void QuickLooks::removeOldest()
{
    std::vector<KeptPicture> pictures = picturesIn(m_Folder.get());
    std::uint64_t bytes = 0;
    for (const KeptPicture& picture : pictures)
        bytes += picture.bytes;
    if (bytes <= m_Options.bytes)
        return;
    std::sort(pictures.begin(), pictures.end(), [](const KeptPicture& one, const KeptPicture& other) {
        return std::pair(one.used.tv_sec, one.used.tv_nsec) <
               std::pair(other.used.tv_sec, other.used.tv_nsec);
    });
    for (const KeptPicture& picture : pictures) {
        if (bytes <= m_Options.bytes)
            return;
        ::unlinkat(m_Folder.get(), picture.name.c_str(), 0); // another process may have been faster
        bytes -= picture.bytes;
    }
}

} // namespace centre
