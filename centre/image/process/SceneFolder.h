#ifndef LUMO_CENTRE_IMAGE_SCENEFOLDER_H
#define LUMO_CENTRE_IMAGE_SCENEFOLDER_H

#include "components/bulkhaul/files/Folder.h"

#include <sys/stat.h>

#include <functional>
#include <string>

namespace centre {

/// The folder of the image that is being read, as a file system of GDAL: kSceneRoot + NAME. Its files can be
/// read; it can't be listed. There is one at a time.
class SceneFolder
{
public:
    /// Opens a file of the folder by its relative path, or returns none.
    using Open = std::function<bulkhaul::FileHandle(const std::string& path)>;

    /// `folder` is to look for names, `file` is the image, which is open already.
    SceneFolder(bulkhaul::FileHandle folder, std::string name, bulkhaul::FileHandle file, Open open);
    ~SceneFolder();
    SceneFolder(const SceneFolder&) = delete;
    SceneFolder& operator=(const SceneFolder&) = delete;

    bulkhaul::FileHandle open(const std::string& path) const;
    bool find(const std::string& path, struct stat& status) const;

    /// The path of the image for GDAL.
    std::string imagePath() const;
    int imageFile() const { return m_File.get(); }

private:
    bulkhaul::FileHandle m_Folder;
    std::string m_Name;
    bulkhaul::FileHandle m_File;
    Open m_Open;
};

constexpr char kSceneRoot[] = "/vsiscene/";

/// Makes the file system known to GDAL. Once, before the first SceneFolder.
void installSceneFileSystem();

} // namespace centre

#endif
