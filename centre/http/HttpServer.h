#ifndef LUMO_CENTRE_HTTP_HTTPSERVER_H
#define LUMO_CENTRE_HTTP_HTTPSERVER_H

#include "centre/endpoint/EndpointObserver.h"
#include "centre/endpoint/ListenOptions.h"
#include "centre/http/Http.h"

#include <memory>
#include <string>

namespace centre {

/// Serves handlers at an address over HTTP/1.1, to users of the catalogue by their tokens.
class HttpServer : public Observed
{
public:
    /// `name` is that of the address in metrics and the call log.
    HttpServer(ConnectionPool& pool, std::string name);
    ~HttpServer() override; ///< stops

    /// To be called before `start`; the handler must outlive `stop`.
    void add(HttpRoute route);
    /// Serves at `options.http`. Throws Error for an address that it can't listen on, and plain text beyond
    /// this machine.
    void start(const ListenOptions& options);
    /// Takes no new requests, gives running ones the grace time of the options, then closes their
    /// connections.
    void stop();
    /// Reads the files of the TLS certificate again, for new connections. Throws Error, and keeps what it
    /// has, when they are not a certificate and its key.
    void reloadCertificate();

    /// "host:port", with the port that was taken.
    const std::string& address() const;
    /// Where clients reach it, "https://host:port", without "/" at the end.
    const std::string& url() const;

    const std::string& name() const override { return m_Name; }
    wirecall::RpcServer::Load load() const override;
    const ConnectionPool& pool() const override { return m_Pool; }
    std::size_t openTransfers() const override { return 0; }

private:
    struct Impl;

    ConnectionPool& m_Pool;
    const std::string m_Name;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace centre

#endif
