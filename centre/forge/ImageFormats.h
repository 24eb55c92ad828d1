#ifndef LUMO_CENTRE_FORGE_IMAGEFORMATS_H
#define LUMO_CENTRE_FORGE_IMAGEFORMATS_H

#include "centre/forge/ImageFile.h"

#include <cstdio>

namespace centre {

/// The largest number of pixels of an image whose data is read; of a larger image only the header is.
constexpr std::uint64_t kMostPixelsRead = 1 << 28;
/// The limit of a format's memory for one image, in bytes.
constexpr std::int64_t kMostMemory = 256 << 20;

// Each reads a file from its start and throws Error(Failed), also when it is canceled.

/// Takes the file over, also when it throws.
ImageFacts readTiff(bulkhaul::FileHandle file, std::uint64_t size, const IsCanceled& isCanceled);
ImageFacts readJpeg(std::FILE* file, const IsCanceled& isCanceled);
ImageFacts readPng(std::FILE* file, const IsCanceled& isCanceled);

} // namespace centre

#endif
