#ifndef LUMO_CENTRE_IMAGE_SCENEMETADATA_H
#define LUMO_CENTRE_IMAGE_SCENEMETADATA_H

#include <array>
#include <string>
#include <vector>

namespace centre {

/// The content of a scene's metadata file. Texts are UTF-8; files are names as the metadata file has them.
struct Scene
{
    std::string name;
    std::vector<std::string> mainFiles; ///< the images
    std::vector<std::string> metaFiles; ///< further metadata
};

// Each function reads the content of a file and throws Error(Failed) for one that is not of its format. Bytes
// of any kind are safe.

/// SPOT 5, DIMAP 1, usually metadata.dim: the name is Dataset_Id/DATASET_NAME.
Scene readSpot5Dim(const std::string& xml);
/// SPOT 6 and 7, DIMAP 2, DIM_*.XML: the name is Dataset_Identification/DATASET_NAME.
Scene readSpot6Dim(const std::string& xml);
/// ALOS, summary.txt, key="value" on each line: the name is Scs_SceneID. Of the files of its keys
/// Pdi_...ProductFileNameNN those that begin with IMG- are images.
Scene readAlosSummary(const std::string& text);

/// ADS, a key and its value on each line, with blanks, tabs, "=" or ":" between them: IMAGE_ID, which is
/// required, SENSOR_TYPE, IMAGE_FILE, ORIENTATION_FILE, CALIBRATION_FILE, DATE_TIME; empty for a key that is
/// missing. The case of keys does not matter.
std::array<std::string, 6> readAdsSup(const std::string& text);

} // namespace centre

#endif
