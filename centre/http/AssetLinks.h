#ifndef LUMO_CENTRE_HTTP_ASSETLINKS_H
#define LUMO_CENTRE_HTTP_ASSETLINKS_H

#include "centre/store/Connection.h"

#include <cstdint>
#include <optional>
#include <string>

namespace centre {

/// Where files are served over HTTP, and links to them that need no header: signed, for one file and one
/// token, until a time. A link ends at once when its token is revoked or ends, and allows no more than the
/// token's user may do at that moment. Safe from any thread.
class AssetLinks
{
public:
    static constexpr std::int64_t kUsualSeconds = 3600;
    static constexpr std::int64_t kMostSeconds = 86400;

    /// `secret` is that of the catalogue: Store::linkSecret.
    explicit AssetLinks(std::string secret) : m_Secret(std::move(secret)) {}

    /// Returns the path of a file, to be added to the URL of the box that holds it: "/assets/12/a%20b.tif".
    static std::string path(std::uint32_t folderId, const std::string& fileName);
    /// Returns the same with a query that lets anyone read the file as `user` until then, in seconds since
    /// 1970.
    std::string sign(std::uint32_t folderId, const std::string& fileName, const User& user,
                     std::int64_t until) const;

    /// Returns whose link it is. `link` is the value of "link" in the query. Returns nothing, and the reason,
    /// for one that was not signed for this file, has ended, or whose token is not valid.
    std::optional<User> verify(Connection& connection, std::uint32_t folderId, const std::string& fileName,
                               const std::string& link, std::string& reason) const;

private:
    std::string signature(std::uint32_t folderId, const std::string& fileName, const User& user,
                          std::int64_t until) const;

    const std::string m_Secret;
};

} // namespace centre

#endif
