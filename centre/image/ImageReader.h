#ifndef LUMO_CENTRE_IMAGE_IMAGEREADER_H
#define LUMO_CENTRE_IMAGE_IMAGEREADER_H

#include "centre/image/ImageProcess.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace centre {

struct ImageReaderOptions
{
    std::string program;    ///< of the image processes; empty: `lumo-image` of this installation
    unsigned processes = 0; ///< at once; 0: one for each processor
    ImageLimits limits;
};

/// Reads images in processes of their own, because an image's bytes are anyone's. The processes are started
/// when they are needed, and again after one has failed. Thread-safe; a call waits for a free process.
/// Functions throw Error(Failed) with the reason why a file can't be read, which may be that the process died
/// or took too long, also when they are canceled; NoImage if the file has no format of images; and
/// bulkhaul::FileFailure if it can't be opened.
class ImageReader
{
public:
    explicit ImageReader(ImageReaderOptions options = {});

    /// Reads the header and the metadata of an image, also of files beside it.
    image::Image describe(const bulkhaul::Folder& folder, const std::string& file,
                          const IsCanceled& isCanceled = neverCanceled);
    /// The same, and as much of the data as shows that it is there and whole.
    image::Image check(const bulkhaul::Folder& folder, const std::string& file,
                       const IsCanceled& isCanceled = neverCanceled);
    /// Makes a picture of an image whose sides have at most so many pixels.
    image::Picture quickLook(const bulkhaul::Folder& folder, const std::string& file, unsigned longestSide,
                             const IsCanceled& isCanceled = neverCanceled);
    /// Reads the metadata file of a scene.
    image::Scene scene(const bulkhaul::Folder& folder, const std::string& file, image::SceneForm form,
                       const IsCanceled& isCanceled = neverCanceled);

    /// The identifiers of the processes that wait for a task.
    std::vector<pid_t> idle() const;

private:
    image::FromProcess run(const bulkhaul::Folder& folder, const image::Task& task,
                           const IsCanceled& isCanceled);
    std::unique_ptr<ImageProcess> take(const IsCanceled& isCanceled);
    void giveBack(std::unique_ptr<ImageProcess> process);

    ImageReaderOptions m_Options;
    mutable std::mutex m_Mutex;
    std::condition_variable m_Free;
    unsigned m_Running = 0; ///< tasks
    std::vector<std::unique_ptr<ImageProcess>> m_Idle;
};

/// Returns the path of `lumo-image`: beside this program, or in the installation's folder for such programs.
std::string imageProgram();

} // namespace centre

#endif
