#include "centre/http/FileResponse.h"

#include <QByteArray>
#include <QDateTime>
#include <QLocale>
#include <QUrl>

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>
#include <strings.h>

namespace centre {

namespace {

struct MediaType
{
    const char* ending;
    const char* type;
};

constexpr MediaType kMediaTypes[] = {
    {".tif", "image/tiff"},
    {".tiff", "image/tiff"},
    {".jp2", "image/jp2"},
    {".j2k", "image/jp2"},
    {".png", "image/png"},
    {".jpg", "image/jpeg"},
    {".jpeg", "image/jpeg"},
    {".gif", "image/gif"},
    {".webp", "image/webp"},
    {".json", "application/json"},
    {".geojson", "application/geo+json"},
    {".xml", "application/xml"},
    {".txt", "text/plain; charset=utf-8"},
    {".csv", "text/csv"},
    {".pdf", "application/pdf"},
    {".zip", "application/zip"},
    {".gz", "application/gzip"},
    {".h5", "application/x-hdf5"},
    {".hdf", "application/x-hdf"},
    {".nc", "application/x-netcdf"},
};

constexpr char kDateFormat[] = "ddd, dd MMM yyyy HH:mm:ss 'GMT'";

bool endsWith(const std::string& text, const char* ending)
{
    const std::size_t length = std::strlen(ending);
    return text.size() >= length && ::strcasecmp(text.c_str() + text.size() - length, ending) == 0;
}

std::string httpDate(std::time_t time)
{
    return QLocale::c().toString(QDateTime::fromSecsSinceEpoch(time, Qt::UTC), kDateFormat).toStdString();
}

std::optional<std::int64_t> parseHttpDate(const std::string& text)
{
    QDateTime time = QLocale::c().toDateTime(QString::fromStdString(text), kDateFormat);
    time.setTimeSpec(Qt::UTC);
    return time.isValid() ? std::optional<std::int64_t>(time.toSecsSinceEpoch()) : std::nullopt;
}

/// A file is replaced by renaming another one to its name, so that each content has a number and times of its
/// own.
std::string entityTag(const struct stat& status)
{
    const auto hex = [](auto number) {
        return QByteArray::number(static_cast<qulonglong>(number), 16).toStdString();
    };
    return "\"" + hex(status.st_ino) + "-" + hex(status.st_size) + "-" + hex(status.st_mtim.tv_sec) + "." +
           hex(status.st_mtim.tv_nsec) + "\"";
}

/// Whether a header If-None-Match names the tag.
bool names(std::string_view header, std::string_view tag)
{
    while (!header.empty()) {
        const std::size_t end = std::min(header.find(','), header.size());
        std::string_view each = header.substr(0, end);
        header.remove_prefix(std::min(end + 1, header.size()));
        each.remove_prefix(std::min(each.find_first_not_of(' '), each.size()));
        if (each.substr(0, 2) == "W/")
            each.remove_prefix(2);
        each = each.substr(0, each.find_last_not_of(' ') + 1);
        if (each == tag || each == "*")
            return true;
    }
    return false;
}

bool isUnchanged(const HttpRequest& request, const std::string& tag, std::time_t modified)
{
    if (const std::string& tags = request.header("if-none-match"); !tags.empty())
        return names(tags, tag);
    const std::optional<std::int64_t> since = parseHttpDate(request.header("if-modified-since"));
    return since && modified <= *since;
}

/// Whether the file is still the one that the client has a part of.
bool isRangeWanted(const HttpRequest& request, const std::string& tag, std::time_t modified)
{
    const std::string& condition = request.header("if-range");
    return condition.empty() || condition == tag || condition == httpDate(modified);
}

/// Reads a whole number of digits; beyond the largest one it is the largest one.
bool readDigits(std::string_view text, std::uint64_t& number)
{
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc::result_out_of_range)
        number = UINT64_MAX;
    return !text.empty() && error != std::errc::invalid_argument && next == end;
}

std::string disposition(const std::string& fileName, const std::string& mediaType)
{
    const bool isShown = mediaType == "image/png" || mediaType == "image/jpeg" || mediaType == "image/gif" ||
                         mediaType == "image/webp";
    return std::string(isShown ? "inline" : "attachment") + "; filename*=UTF-8''" +
           QUrl::toPercentEncoding(QString::fromStdString(fileName)).toStdString();
}

} // namespace

std::string mediaTypeOf(const std::string& fileName)
{
    for (const MediaType& each : kMediaTypes)
        if (endsWith(fileName, each.ending))
            return each.type;
    return "application/octet-stream";
}

ByteRange parseRange(const std::string& header, std::uint64_t fileSize)
{
    using Kind = ByteRange::Kind;
    constexpr std::string_view unit = "bytes=";
    std::string_view text = header;
    if (::strncasecmp(header.c_str(), unit.data(), unit.size()) != 0 ||
        text.find(',') != std::string_view::npos)
        return {Kind::Whole};
    text.remove_prefix(unit.size());
    const std::size_t dash = text.find('-');
    if (dash == std::string_view::npos)
        return {Kind::Impossible};
    const std::string_view from = text.substr(0, dash);
    const std::string_view to = text.substr(dash + 1);
    std::uint64_t first = 0;
    std::uint64_t last = UINT64_MAX;
    if (from.empty()) { // the last bytes
        std::uint64_t count = 0;
        if (!readDigits(to, count) || count == 0 || fileSize == 0)
            return {Kind::Impossible};
        count = std::min(count, fileSize);
        return {Kind::Part, fileSize - count, count};
    }
    if (!readDigits(from, first) || (!to.empty() && !readDigits(to, last)) || last < first ||
        first >= fileSize)
        return {Kind::Impossible};
    return {Kind::Part, first, std::min(last, fileSize - 1) - first + 1};
}

HttpResponse fileResponse(bulkhaul::FileHandle file, const std::string& fileName, const HttpRequest& request)
{
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        throw HttpError(404, "no such file");
    const std::string tag = entityTag(status);
    const auto size = static_cast<std::uint64_t>(status.st_size);
    HttpResponse response;
    response.headers = {{"ETag", tag},
                        {"Last-Modified", httpDate(status.st_mtime)},
                        {"Accept-Ranges", "bytes"},
                        {"Cache-Control", "private, no-cache"}};
    if (isUnchanged(request, tag, status.st_mtime)) {
        response.status = 304;
        return response;
    }
    ByteRange range{ByteRange::Kind::Whole};
    if (isRangeWanted(request, tag, status.st_mtime))
        range = parseRange(request.header("range"), size);
    if (range.kind == ByteRange::Kind::Impossible) {
        response = HttpResponse::problem(416, "the file has no such range; it has " + std::to_string(size) +
                                                  " bytes");
        response.headers.emplace_back("Content-Range", "bytes */" + std::to_string(size));
        return response;
    }
    const std::string mediaType = mediaTypeOf(fileName);
    response.headers.emplace_back("Content-Type", mediaType);
    response.headers.emplace_back("Content-Disposition", disposition(fileName, mediaType));
    // What users upload runs nothing in the origin of this address.
    response.headers.emplace_back("Content-Security-Policy", "default-src 'none'; sandbox");
    if (range.kind == ByteRange::Kind::Part) {
        response.status = 206;
        response.headers.emplace_back("Content-Range", "bytes " + std::to_string(range.offset) + "-" +
                                                           std::to_string(range.offset + range.size - 1) +
                                                           "/" + std::to_string(size));
        response.file = HttpFile{std::move(file), range.offset, range.size};
    } else
        response.file = HttpFile{std::move(file), 0, size};
    return response;
}

} // namespace centre
