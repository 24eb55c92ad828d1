#include "centre/image/process/SceneFile.h"

#include "centre/base/Error.h"
#include "centre/image/process/SceneMetadata.h"

#include <cerrno>
#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace centre {

namespace {

constexpr std::int64_t kLargest = 16 << 20;

std::string contentOf(int file)
{
    struct stat status = {};
    if (::fstat(file, &status) != 0)
        throw refusal("the file can't be read");
    if (status.st_size > kLargest)
        throw refusal("the file has " + std::to_string(status.st_size) + " bytes, more than " +
                      std::to_string(kLargest));
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t done = 0;
    while (done < content.size()) {
        const ssize_t more =
            ::pread(file, content.data() + done, content.size() - done, static_cast<off_t>(done));
        if (more < 0 && errno != EINTR)
            throw refusal("the file can't be read");
        if (more == 0)
            break;
        done += more > 0 ? static_cast<std::size_t>(more) : 0;
    }
    content.resize(done);
    return content;
}

Scene read(const std::string& content, image::SceneForm form)
{
    switch (form) {
    case image::SPOT5:
        return readSpot5Dim(content);
    case image::SPOT6:
        return readSpot6Dim(content);
    default:
        return readAlosSummary(content);
    }
}

} // namespace

image::Scene readScene(int file, image::SceneForm form)
{
    const std::string content = contentOf(file);
    image::Scene answer;
    if (form == image::ADS) {
        for (const std::string& text : readAdsSup(content))
            answer.add_texts(text);
        return answer;
    }
    const Scene scene = read(content, form);
    answer.set_name(scene.name);
    for (const std::string& name : scene.mainFiles)
        answer.add_main_files(name);
    for (const std::string& name : scene.metaFiles)
        answer.add_meta_files(name);
    return answer;
}

} // namespace centre
