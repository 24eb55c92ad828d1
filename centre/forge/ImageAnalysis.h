#ifndef LUMO_CENTRE_FORGE_IMAGEANALYSIS_H
#define LUMO_CENTRE_FORGE_IMAGEANALYSIS_H

#include "centre/base/Cancellation.h"
#include "centre/image/ImageReader.h"
#include "centre/store/ConnectionPool.h"
#include "forgeserver.pb.h"

namespace centre {

/// Reads the real files of an image: main files must be whole images, metadata and attached files must exist.
/// Each reference is an identifier of the storage catalogue, with the file's name or none. With the flag,
/// writes the results to the main files' records: short_text "GTiff 512x256x3", long_text the georeference.
/// Throws std::exception, also when it is canceled, with a reason that begins with the image's name.
void analyzeImage(ConnectionPool& pool, ImageReader& images, const User& user,
                  const forgeserver::AnalyzeImageReq& request, const IsCanceled& isCanceled);

} // namespace centre

#endif
