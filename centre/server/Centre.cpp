#include "centre/server/Centre.h"

#include "centre/box/Box.h"
#include "centre/endpoint/Endpoint.h"
#include "centre/endpoint/ServeLock.h"
#include "centre/forge/ForgeService.h"
#include "centre/forge/MainFile.h"
#include "centre/http/Assets.h"
#include "centre/http/HttpServer.h"
#include "centre/image/ImageReader.h"
#include "centre/ledger/LedgerService.h"
#include "centre/server/PlanningService.h"
#include "centre/store/ReadPool.h"
#include "centre/store/Schema.h"
#include "centre/store/Store.h"

#include <future>
#include <optional>

namespace centre {

namespace {

/// Locks a data folder, and leaves no lock file in any other folder. A server may serve several processes.
std::unique_ptr<ServeLock> lockDataFolder(const std::string& dataFolder)
{
    openDatabase(dataFolder);
    if (isServer(dataFolder))
        return nullptr;
    return std::make_unique<ServeLock>(dataFolder + "/serve.lock", dataFolder);
}

} // namespace

struct Centre::Impl
{
    Impl(const std::string& dataFolder, const ServeOptions& options)
        : lock(lockDataFolder(dataFolder)),
          pool(dataFolder, options.databaseConnections),
          reads(pool, options.replica, options.databaseConnections),
          ledger(pool, reads,
                 [this](const User& user, std::uint32_t fileId, const IsCanceled& isCanceled) {
                     return recordTextsOf(pool, images, user, fileId, isCanceled);
                 }),
          planning(pool),
          forge(pool, images, options.copyRoots),
          endpoint(pool, faults)
    {
        endpoint.observe(reads.replica());
        endpoint.add(ledger);
        endpoint.add(planning);
        endpoint.add(forge);
    }

    std::unique_ptr<ServeLock> lock;
    ConnectionPool pool;
    ReadPool reads;
    Faults faults;
    std::vector<std::unique_ptr<Box>> boxes;
    ImageReader images;
    LedgerService ledger;
    PlanningService planning;
    ForgeService forge;
    Endpoint endpoint; ///< destroyed first: its calls use the members above
    std::optional<Assets> assets;
    std::optional<HttpServer> http;

    void startHttp(const std::string& place, const ServeOptions& options);
};

/// The same address serves the files of the boxes.
void Centre::Impl::startHttp(const std::string& place, const ServeOptions& options)
{
    Store store(place);
    std::vector<std::string> codes;
    for (const auto& box : boxes)
        codes.push_back(box->code());
    if (!codes.empty() && options.httpUrl.empty())
        requireOneHost(options.http);
    assets.emplace(pool, store.linkSecret(), codes);
    assets->addTo(http.emplace(pool, "http"));
    http->start(options);
    for (const std::string& code : codes)
        store.setBoxHttp(code, http->url());
}

Centre::Centre(const std::string& dataFolder, const ServeOptions& options)
    : m_Impl(std::make_unique<Impl>(dataFolder, options))
{
    std::vector<const google::protobuf::ServiceDescriptor*> services;
    if (!options.boxes.empty())
        services = Box::services();
    services.insert(services.end(),
                    {hubline::HubServices::descriptor(), ledgerserver::LedgerServices::descriptor(),
                     Tavrel::TavrelServer::descriptor(), forgeserver::ForgeServices::descriptor()});
    addFaults(m_Impl->faults, options.faults, services);

    // The addresses of the boxes are known before the first call can ask for them.
    for (const BoxPlace& box : options.boxes) {
        ListenOptions listen = options;
        listen.address = box.address;
        listen.http.clear();
        m_Impl->boxes.push_back(std::make_unique<Box>(dataFolder, box.code, listen, m_Impl->faults));
    }
    if (!options.http.empty())
        m_Impl->startHttp(dataFolder, options);
    m_Impl->endpoint.start(options);
}

Centre::~Centre()
{
    stop();
}

int Centre::port() const
{
    return m_Impl->endpoint.port();
}

std::string Centre::address() const
{
    return m_Impl->endpoint.address();
}

std::string Centre::httpUrl() const
{
    return m_Impl->http ? m_Impl->http->url() : std::string();
}

std::vector<BoxPlace> Centre::boxes() const
{
    std::vector<BoxPlace> places;
    for (const auto& box : m_Impl->boxes)
        places.push_back({box->code(), box->address()});
    return places;
}

const std::vector<std::string>& Centre::copyRoots() const
{
    return m_Impl->forge.copyRoots();
}

void Centre::reloadCertificate()
{
    m_Impl->endpoint.reloadCertificate();
    if (m_Impl->http)
        m_Impl->http->reloadCertificate();
    for (const auto& box : m_Impl->boxes)
        box->reloadCertificate();
}

void Centre::stop()
{
    std::vector<std::future<void>> stops; // each waits for its calls
    for (const auto& box : m_Impl->boxes)
        stops.push_back(std::async([&box] { box->stop(); }));
    if (m_Impl->http)
        stops.push_back(std::async([this] { m_Impl->http->stop(); }));
    m_Impl->endpoint.stop();
    for (std::future<void>& stopped : stops)
        stopped.wait();
    m_Impl->lock.reset();
}

std::vector<FaultCount> Centre::faultCounts() const
{
    return m_Impl->faults.counts();
}

} // namespace centre
