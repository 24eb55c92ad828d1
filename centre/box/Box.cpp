#include "centre/box/Box.h"

#include "centre/base/Error.h"
#include "centre/base/EverySecond.h"
#include "centre/base/Text.h"
#include "centre/box/BoxService.h"
#include "centre/box/DataFolderCatalogue.h"
#include "centre/database/PostgresDatabase.h"
#include "centre/endpoint/Endpoint.h"
#include "centre/endpoint/ServeLock.h"
#include "centre/http/Assets.h"
#include "centre/http/HttpServer.h"
#include "centre/store/Schema.h"
#include "centre/store/Store.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <future>
#include <iostream>
#include <optional>

namespace centre {

namespace {

// A server ends the session of a machine that has gone, and its locks, after a few seconds more.
constexpr std::chrono::seconds kLongestGap(20);

std::unique_ptr<ServeLock> lockBox(const std::string& place, const std::string& code)
{
    const std::string what = "box " + code + " of " + shownPlace(place);
    if (isServer(place))
        return std::make_unique<ServeLock>(std::make_unique<PostgresDatabase>(place), "box " + code, what);
    const std::string name = QUrl::toPercentEncoding(QString::fromStdString(code)).toStdString();
    return std::make_unique<ServeLock>(place + "/box-" + name + ".lock", what);
}

} // namespace

struct Box::Impl
{
    Impl(const std::string& dataFolder, const std::string& boxCode, const ListenOptions& listen,
         Faults& faults)
        : code(boxCode),
          lock(lockBox(dataFolder, boxCode)),
          pool(dataFolder, listen.databaseConnections),
          catalogue(pool, boxCode),
          service(catalogue, faults),
          endpoint(pool, faults)
    {
        endpoint.add(service);
        endpoint.countTransfers([this] { return service.openTransfers(); });
    }

    /// Ends what users may do no longer, and checks that no other process has taken the box.
    void look()
    {
        try {
            service.endRefused();
        } catch (const std::exception& error) {
            std::cerr << "lumo-centre: box " + escaped(code) + ": " + error.what() + "\n";
        }
        try {
            if (isDisplaced)
                return;
            if (!lock->isHeld())
                return displace("another process serves it by now");
            lastHeld = std::chrono::steady_clock::now();
        } catch (const std::exception& error) {
            if (std::chrono::steady_clock::now() - lastHeld >= kLongestGap)
                displace("its lock is lost: " + std::string(error.what()));
        }
    }

    void displace(const std::string& reason)
    {
        isDisplaced = true;
        std::cerr << "lumo-centre: box " + escaped(code) + " is to end: " + reason + "\n";
        if (displaced)
            displaced();
    }

    const std::string code;
    std::unique_ptr<ServeLock> lock;
    ConnectionPool pool;
    DataFolderCatalogue catalogue;
    BoxService service;
    Endpoint endpoint; ///< its calls use the members above
    std::optional<Assets> assets;
    std::optional<HttpServer> http;
    std::function<void()> displaced;
    bool isDisplaced = false;
    std::chrono::steady_clock::time_point lastHeld = std::chrono::steady_clock::now(); ///< the lock
    std::optional<EverySecond> watch;                                                  ///< destroyed first
};

Box::Box(const std::string& dataFolder, const std::string& code, const ListenOptions& listen, Faults& faults)
{
    Store store(dataFolder);
    ListenOptions options = listen;
    options.name = "box " + code;
    const std::string known = store.boxAddress(code);
    if (options.address.empty())
        options.address = known;
    requireOneHost(options.announced.empty() ? options.address : options.announced);
    m_Impl = std::make_unique<Impl>(dataFolder, code, listen, faults);
    m_Impl->endpoint.start(options);
    m_Impl->displaced = listen.displaced;
    m_Impl->watch.emplace([this] { m_Impl->look(); });
    store.setBoxAddress(code, options.announced.empty() ? address() : options.announced);
    if (!options.http.empty()) {
        if (options.httpUrl.empty())
            requireOneHost(options.http);
        m_Impl->assets.emplace(m_Impl->pool, store.linkSecret(), std::vector<std::string>{code});
        m_Impl->assets->addTo(m_Impl->http.emplace(m_Impl->pool, options.name + " http"));
        m_Impl->http->start(options);
    }
    store.setBoxHttp(code, httpUrl());
}

Box::~Box() = default;

std::vector<const google::protobuf::ServiceDescriptor*> Box::services()
{
    return {hubline::HubServices::descriptor(), haulbox::BoxServices::descriptor()};
}

const std::string& Box::code() const
{
    return m_Impl->code;
}

const std::string& Box::address() const
{
    return m_Impl->endpoint.address();
}

std::string Box::httpUrl() const
{
    return m_Impl->http ? m_Impl->http->url() : std::string();
}

void Box::reloadCertificate()
{
    if (m_Impl->http)
        m_Impl->http->reloadCertificate();
    m_Impl->endpoint.reloadCertificate();
}

void Box::stop()
{
    m_Impl->watch.reset();
    std::future<void> stopped;
    if (m_Impl->http)
        stopped = std::async([this] { m_Impl->http->stop(); });
    m_Impl->endpoint.stop();
    if (stopped.valid())
        stopped.wait();
    m_Impl->lock.reset();
}

} // namespace centre
