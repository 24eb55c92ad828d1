#ifndef LUMO_CENTRE_STORE_FILECONTENT_H
#define LUMO_CENTRE_STORE_FILECONTENT_H

#include <cstdint>
#include <string>

namespace centre {

/// What the catalogue knows about the content of a file.
struct FileContent
{
    std::uint64_t size;   ///< in bytes
    std::string digest{}; ///< XXH3-128 of the digests of its chunks of 1 MiB, in hexadecimal; empty: unknown
};

} // namespace centre

#endif
