#ifndef LUMO_CENTRE_IMAGE_QUICKLOOKS_H
#define LUMO_CENTRE_IMAGE_QUICKLOOKS_H

#include "centre/base/Cancellation.h"
#include "centre/image/ImageReader.h"
#include "components/bulkhaul/files/Folder.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>

namespace centre {

struct QuickLookOptions
{
    std::string folder;                             ///< where they are kept; made if missing; empty: nowhere
    std::uint64_t bytes = std::uint64_t(256) << 20; ///< the most that are kept
    unsigned longestSide = 512;                     ///< of a picture, in pixels
};

struct QuickLook
{
    std::string mediaType; ///< image/jpeg or image/png
    std::string data;      ///< the picture's file
};

/// Makes small pictures of images when they are first wanted, and keeps them in a folder, which several
/// processes may share. One is made anew after its image has changed: its size, times or inode. When all
/// take too much, those that were not wanted for the longest time go; each process may keep a sixteenth more
/// for a while. A picture that was cut short, as by a crash, is made anew. Thread-safe.
/// Functions throw what ImageReader throws. Whether the caller may see the image is for the caller to check.
class QuickLooks
{
public:
    /// `images` must outlive the object. Throws Error(Failed) if the folder can't be made.
    QuickLooks(ImageReader& images, QuickLookOptions options);

    /// Returns the picture of an image file. Threads that want the same picture wait for one to make it.
    QuickLook get(const bulkhaul::Folder& folder, const std::string& file,
                  const IsCanceled& isCanceled = neverCanceled);
    /// Returns a text, 32 hexadecimal digits, that is another one once the file has changed. It makes no
    /// picture, so it is cheap: for an ETag.
    std::string tag(const bulkhaul::Folder& folder, const std::string& file) const;

private:
    QuickLook make(const bulkhaul::Folder& folder, const std::string& file, const std::string& tag,
                   const IsCanceled& isCanceled);
    bool find(const std::string& tag, QuickLook& found) const;
    void keep(const std::string& tag, const std::string& data);
    void removeOldest();

    ImageReader& m_Images;
    const QuickLookOptions m_Options;
    bulkhaul::FileHandle m_Folder; ///< empty: nothing is kept
    std::mutex m_Mutex;
    std::condition_variable m_Made;
    std::set<std::string> m_Making;    ///< by tag
    std::uint64_t m_SinceLastLook = 0; ///< bytes that were added since all were counted
};

} // namespace centre

#endif
