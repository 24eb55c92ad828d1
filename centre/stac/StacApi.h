#ifndef LUMO_CENTRE_STAC_STACAPI_H
#define LUMO_CENTRE_STAC_STACAPI_H

#include "centre/http/Http.h"
#include "centre/stac/Items.h"
#include "centre/store/ConnectionPool.h"

#include <functional>
#include <string>
#include <vector>

namespace centre {

/// Serves the image catalogue as a STAC API, version 1.0.0, below /stac: docs/http.md says what it has. Safe
/// from any thread.
class StacApi : public HttpHandler
{
public:
    static constexpr char kPath[] = "/stac";

    /// Returns where the assets of one answer are, for the user of a request.
    using Addresses = std::function<AssetAddressesOf(const HttpRequest& request)>;

    StacApi(ConnectionPool& pool, Addresses addresses);

    /// What it answers.
    std::vector<HttpRoute> routes();

    HttpResponse handle(const HttpRequest& request) override;

private:
    /// A request below /stac, with what it needs.
    struct Call;

    HttpResponse answer(const HttpRequest& request, const std::vector<std::string>& path);
    HttpResponse collection(Call& call, const std::vector<std::string>& path);
    HttpResponse search(Call& call);
    HttpResponse itemsOf(Call& call, const Collection& collection);
    HttpResponse item(Call& call, const Collection& collection, const std::string& id);
    nlohmann::json documentOf(Call& call, const Collection& collection);

    ConnectionPool& m_Pool;
    const Addresses m_Addresses;
    CollectionExtents m_Extents;
};

} // namespace centre

#endif
