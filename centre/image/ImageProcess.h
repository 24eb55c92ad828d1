#ifndef LUMO_CENTRE_IMAGE_IMAGEPROCESS_H
#define LUMO_CENTRE_IMAGE_IMAGEPROCESS_H

#include "centre/base/Cancellation.h"
#include "components/bulkhaul/files/Folder.h"
#include "image/image_process.pb.h"

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace centre {

/// What an image process may use.
struct ImageLimits
{
    std::chrono::milliseconds time{60000}; ///< for one image
    std::uint64_t memory = 1 << 30;        ///< address space, bytes
};

/// A process that reads images, one at a time. It opens no file itself: the centre opens each file for it,
/// below the image's folder and never through a symbolic link. For one thread at a time.
class ImageProcess
{
public:
    /// Throws Error(Failed) if the process can't be started or can't confine itself.
    ImageProcess(const std::string& program, const ImageLimits& limits);
    /// Kills the process.
    ~ImageProcess();

    ImageProcess(const ImageProcess&) = delete;
    ImageProcess& operator=(const ImageProcess&) = delete;

    /// Does a task for a file in a folder. Throws Error(Failed) with the reason of a refusal, when the
    /// process takes too long or dies, and when it is canceled, and bulkhaul::FileFailure if the file can't
    /// be opened. After a failure of the process itself isUsable() is false.
    image::FromProcess run(const bulkhaul::Folder& folder, const image::Task& task,
                           const IsCanceled& isCanceled);

    /// Whether it can run another task. Its memory and CPU time are bounded in all, so it ends some day.
    bool isUsable() const;
    pid_t id() const { return m_Id; }

private:
    using Clock = std::chrono::steady_clock;

    image::FromProcess receive(Clock::time_point end, const IsCanceled& isCanceled);
    void answerWanted(const bulkhaul::Folder& folder, const std::string& path);
    std::string causeOfDeath();

    const ImageLimits m_Limits;
    pid_t m_Id = -1;
    bulkhaul::FileHandle m_Socket;
    bool m_Failed = false;
    int m_Tasks = 0;
    Clock::duration m_Busy{0};
};

/// Opens a regular file of a folder to be read. Throws Error(Failed) if it is not a regular file and
/// bulkhaul::FileFailure if it can't be opened.
bulkhaul::FileHandle openRegularFile(const bulkhaul::Folder& folder, const std::string& name);

} // namespace centre

#endif
