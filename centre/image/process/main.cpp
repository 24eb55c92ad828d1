// lumo-image reads images for lumo-centre, in a process of its own that may do nothing else.

#include "centre/base/Error.h"
#include "centre/image/Channel.h"
#include "centre/image/NoImage.h"
#include "centre/image/process/Confinement.h"
#include "centre/image/process/RasterFile.h"
#include "centre/image/process/SceneFile.h"
#include "image/image_process.pb.h"
#include "lumo/components/platform/Utf8.h"

#include <cpl_conv.h>
#include <cpl_string.h>
#include <ogr_spatialref.h>

#include <cstdlib>
#include <iostream>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace centre;

constexpr int kSocket = 3;

bool always()
{
    return true;
}

/// Asks the centre for a file beside the image.
bulkhaul::FileHandle wantedFile(const std::string& path)
{
    image::FromProcess wanted;
    image::ToProcess answer;
    std::vector<bulkhaul::FileHandle> file;
    wanted.set_wanted(path);
    if (!sendMessage(kSocket, wanted) || !receiveMessage(kSocket, answer, file, always))
        ::_exit(1); // the centre has gone
    return answer.open_error() == 0 && file.size() == 1 ? std::move(file[0]) : bulkhaul::FileHandle();
}

image::FromProcess run(const image::Task& task, std::vector<bulkhaul::FileHandle>& files)
{
    image::FromProcess answer;
    if (files.size() != 2)
        throw refusal("a task comes with two descriptors");
    const SceneFolder folder(std::move(files[0]), task.file(), std::move(files[1]), wantedFile);
    if (task.work() == image::Task::SCENE) {
        *answer.mutable_scene() = readScene(folder.imageFile(), task.form());
        return answer;
    }
    RasterFile image(folder);
    if (task.work() == image::Task::QUICK_LOOK) {
        *answer.mutable_picture() = image.quickLook(task.longest_side());
        return answer;
    }
    if (task.work() == image::Task::CHECK)
        image.requireData();
    *answer.mutable_image() = image.describe();
    return answer;
}

/// Does tasks until the centre closes the socket.
void serve()
{
    image::ToProcess message;
    for (;;) {
        std::vector<bulkhaul::FileHandle> files;
        if (!receiveMessage(kSocket, message, files, always))
            return;
        image::FromProcess answer;
        try {
            answer = run(message.task(), files);
        } catch (const std::bad_alloc&) {
            answer.set_refusal("it takes more memory than an image may");
        } catch (const std::exception& exception) {
            answer.set_no_image(dynamic_cast<const NoImage*>(&exception) != nullptr);
            const std::string reason = exception.what();
            answer.set_refusal(platform::isUtf8(reason) ? reason : platform::escaped(reason));
        }
        if (!sendMessage(kSocket, answer))
            return;
    }
}

/// Opens the database of reference systems, and returns the folders from which GDAL and PROJ read later.
std::vector<std::string> warmUp()
{
    setUpGdal();
    installSceneFileSystem();
    OGRSpatialReference projected;
    OGRSpatialReference geographic;
    projected.importFromEPSG(32650);
    geographic.importFromEPSG(4326);
    delete OGRCreateCoordinateTransformation(&projected, &geographic);
    std::vector<std::string> folders;
    const CPLStringList paths(OSRGetPROJSearchPaths());
    folders.assign(paths.List(), paths.List() + paths.Count());
    if (const char* file = CPLFindFile("gdal", "gdalvrt.xsd"))
        folders.emplace_back(CPLGetPath(file));
    return folders;
}

} // namespace

int main(int count, char** arguments)
{
    int type = 0;
    socklen_t size = sizeof type;
    if (count != 2 || ::getsockopt(kSocket, SOL_SOCKET, SO_TYPE, &type, &size) != 0) {
        std::cerr << "lumo-image is started by lumo-centre, which it reads images for.\n";
        return 2;
    }
    image::FromProcess ready;
    ready.set_ready(true);
    try {
        limitResources(std::strtoull(arguments[1], nullptr, 10));
        confine(warmUp());
    } catch (const std::exception& exception) {
        ready.set_refusal(exception.what());
    }
    if (sendMessage(kSocket, ready) && ready.kind_case() == image::FromProcess::kReady)
        serve();
    ::_exit(0); // nothing to be cleaned up, and libraries may want more than is left
}
