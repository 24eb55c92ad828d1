#ifndef LUMO_CENTRE_FORGE_IMAGEFORMATS_H
#define LUMO_CENTRE_FORGE_IMAGEFORMATS_H

#include "centre/forge/ImageFile.h"

#include <cstdio>

namespace centre {

/// The data of an image up to so many pixels is read; of a larger one the header alone.
constexpr std::uint64_t kMostPixelsRead = 1 << 28;
/// What a format may take of memory for one image, in bytes.
constexpr std::int64_t kMostMemory = 256 << 20;

// Each reads a file from its start and throws Error(Failed), also when it is canceled.

/// Takes the descriptor over, also when it throws.
ImageFacts readTiff(bulkhaul::FileHandle file, std::uint64_t size, const IsCanceled& isCanceled);
ImageFacts readJpeg(std::FILE* file, const IsCanceled& isCanceled);
ImageFacts readPng(std::FILE* file, const IsCanceled& isCanceled);

} // namespace centre

#endif
