#ifndef LUMO_CENTRE_FORGE_IMAGEANALYSIS_H
#define LUMO_CENTRE_FORGE_IMAGEANALYSIS_H

#include "centre/base/Cancellation.h"
#include "centre/store/ConnectionPool.h"
#include "forgeserver.pb.h"

namespace centre {

/// Looks at the real files of an image: main files must be images that can be read, metadata and attached
/// files must be there. Each reference is an identifier of the storage catalogue with the file's name or
/// none. With the flag what was found goes into the main files' records: short_text "GTiff 512x256x3",
/// long_text the georeference. Throws std::exception with a reason that begins with the image's name. It
/// is given up when nobody waits for the call's answer any more.
void analyzeImage(ConnectionPool& pool, const User& user, const forgeserver::AnalyzeImageReq& request,
                  const IsCanceled& isCanceled);

} // namespace centre

#endif
