#ifndef LUMO_CENTRE_HTTP_ASSETS_H
#define LUMO_CENTRE_HTTP_ASSETS_H

#include "centre/http/AssetLinks.h"
#include "centre/http/Http.h"
#include "centre/store/ConnectionPool.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace centre {

class HttpServer;

/// Serves the registered files of storage boxes at AssetLinks::path, to users who may read them and to
/// whoever has a signed link, and makes such links at "/links" in place of "/assets". A file of a box that
/// another process serves is a redirection to that box, by a signed link.
class Assets
{
public:
    /// Serves the boxes with these codes from this machine's disks.
    Assets(ConnectionPool& pool, std::string linkSecret, std::vector<std::string> boxes);

    /// Adds the routes to a server, which the object must outlive.
    void addTo(HttpServer& server);
    const AssetLinks& links() const { return m_Links; }

private:
    /// A registered file on its box.
    struct Place
    {
        std::uint32_t folderId;
        std::string name;
        std::string root;  ///< of its disk
        std::string below; ///< the file's path below it
        std::string box;
        std::string boxUrl; ///< where that serves HTTP; empty: it does not
    };

    class Files : public HttpHandler
    {
    public:
        explicit Files(Assets& assets) : m_Assets(assets) {}
        HttpResponse handle(const HttpRequest& request) override { return m_Assets.serve(request); }

    private:
        Assets& m_Assets;
    };

    class Links : public HttpHandler
    {
    public:
        explicit Links(Assets& assets) : m_Assets(assets) {}
        HttpResponse handle(const HttpRequest& request) override { return m_Assets.makeLink(request); }

    private:
        Assets& m_Assets;
    };

    HttpResponse serve(const HttpRequest& request);
    HttpResponse makeLink(const HttpRequest& request);
    /// Throws HttpError (404) for a file that does not exist or that the user may not read.
    Place find(Connection& connection, const User& user, const HttpRequest& request) const;
    User callerOf(Connection& connection, const HttpRequest& request) const;
    bool isHere(const Place& place) const;

    ConnectionPool& m_Pool;
    const AssetLinks m_Links;
    const std::vector<std::string> m_Boxes;
    Files m_FileHandler{*this};
    Links m_LinkHandler{*this};
};

} // namespace centre

#endif
