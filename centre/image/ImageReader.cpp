#include "centre/image/ImageReader.h"

#include "centre/base/Date.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <thread>
#include <utility>

namespace centre {

namespace {

bool isFinite(const image::Bounds& bounds)
{
    return std::isfinite(bounds.west()) && std::isfinite(bounds.south()) && std::isfinite(bounds.east()) &&
           std::isfinite(bounds.north());
}

bool isOnGlobe(const image::Bounds& bounds)
{
    return isFinite(bounds) && std::abs(bounds.west()) <= 180 && std::abs(bounds.east()) <= 180 &&
           -90 <= bounds.south() && bounds.south() <= bounds.north() && bounds.north() <= 90;
}

/// Drops what can't be true. The process that read it may be in the hands of the image.
image::Image checked(image::Image image)
{
    if (image.width() == 0 || image.height() == 0 || image.bands_size() == 0)
        throw refusal("an image without pixels");
    if (!isFinite(image.bounds()))
        image.clear_bounds();
    if (!isOnGlobe(image.geographic_bounds()))
        image.clear_geographic_bounds();
    if (!isoDate(image.date()))
        image.clear_date();
    return image;
}

} // namespace

ImageReader::ImageReader(ImageReaderOptions options) : m_Options(std::move(options))
{
    if (m_Options.program.empty())
        m_Options.program = imageProgram();
    if (m_Options.processes == 0)
        m_Options.processes = std::max(1u, std::thread::hardware_concurrency());
}

image::Image ImageReader::describe(const bulkhaul::Folder& folder, const std::string& file,
                                   const IsCanceled& isCanceled)
{
    image::Task task;
    task.set_work(image::Task::DESCRIBE);
    task.set_file(file);
    return checked(run(folder, task, isCanceled).image());
}

image::Image ImageReader::check(const bulkhaul::Folder& folder, const std::string& file,
                                const IsCanceled& isCanceled)
{
    image::Task task;
    task.set_work(image::Task::CHECK);
    task.set_file(file);
    return checked(run(folder, task, isCanceled).image());
}

image::Picture ImageReader::quickLook(const bulkhaul::Folder& folder, const std::string& file,
                                      unsigned longestSide, const IsCanceled& isCanceled)
{
    image::Task task;
    task.set_work(image::Task::QUICK_LOOK);
    task.set_file(file);
    task.set_longest_side(longestSide);
    return run(folder, task, isCanceled).picture();
}

image::Scene ImageReader::scene(const bulkhaul::Folder& folder, const std::string& file,
                                image::SceneForm form, const IsCanceled& isCanceled)
{
    image::Task task;
    task.set_work(image::Task::SCENE);
    task.set_file(file);
    task.set_form(form);
    return run(folder, task, isCanceled).scene();
}

std::vector<pid_t> ImageReader::idle() const
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    std::vector<pid_t> ids;
    for (const auto& process : m_Idle)
        ids.push_back(process->id());
    return ids;
}

image::FromProcess ImageReader::run(const bulkhaul::Folder& folder, const image::Task& task,
                                    const IsCanceled& isCanceled)
{
    std::unique_ptr<ImageProcess> process = take(isCanceled);
    try {
        if (process && !process->isUsable())
            process.reset();
        if (!process)
            process = std::make_unique<ImageProcess>(m_Options.program, m_Options.limits);
        image::FromProcess answer = process->run(folder, task, isCanceled);
        giveBack(std::move(process));
        return answer;
    } catch (...) {
        giveBack(std::move(process));
        throw;
    }
}

/// Waits until another task may run. Returns the process that has been idle for the shortest time, or none.
std::unique_ptr<ImageProcess> ImageReader::take(const IsCanceled& isCanceled)
{
    constexpr std::chrono::milliseconds kLookForCancellation{100};
    std::unique_lock<std::mutex> lock(m_Mutex);
    do
        requireNotCanceled(isCanceled);
    while (!m_Free.wait_for(lock, kLookForCancellation, [this] { return m_Running < m_Options.processes; }));
    ++m_Running;
    if (m_Idle.empty())
        return nullptr;
    std::unique_ptr<ImageProcess> process = std::move(m_Idle.back());
    m_Idle.pop_back();
    return process;
}

void ImageReader::giveBack(std::unique_ptr<ImageProcess> process)
{
    if (process && !process->isUsable())
        process.reset();
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        --m_Running;
        if (process)
            m_Idle.push_back(std::move(process));
    }
    m_Free.notify_one();
}

std::string imageProgram()
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const std::filesystem::path beside = folder / "lumo-image";
    if (std::filesystem::exists(beside, error))
        return beside.string();
    return (folder / LUMO_IMAGE_FOLDER / "lumo-image").lexically_normal().string();
}

} // namespace centre
