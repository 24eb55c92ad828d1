#ifndef LUMO_CENTRE_HTTP_FILERESPONSE_H
#define LUMO_CENTRE_HTTP_FILERESPONSE_H

#include "centre/http/Http.h"

#include <cstdint>
#include <string>

namespace centre {

/// Returns the media type of a file by the end of its name; "application/octet-stream" for any other, and for
/// what a browser would run.
std::string mediaTypeOf(const std::string& fileName);

/// What a header Range asks for of a file of some size.
struct ByteRange
{
    enum class Kind
    {
        Whole, ///< no range, one of another unit than bytes, or several
        Part,
        Impossible ///< not a range, or after the file's end
    };

    Kind kind;
    std::uint64_t offset = 0;
    std::uint64_t size = 0; ///< of a part, in bytes, at least 1
};

ByteRange parseRange(const std::string& header, std::uint64_t fileSize);

/// Returns the answer to a request for an open regular file: the whole file or a range, or that it has not
/// changed since the client had it. Throws HttpError if it can't be read.
HttpResponse fileResponse(bulkhaul::FileHandle file, const std::string& fileName, const HttpRequest& request);

} // namespace centre

#endif
