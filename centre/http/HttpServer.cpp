#include "centre/http/HttpServer.h"

#include "centre/base/Error.h"
#include "centre/http/Exchange.h"
#include "centre/http/Routes.h"
#include "centre/http/SlowClients.h"
#include "centre/http/TlsCertificate.h"
#include "centre/http/Workers.h"
#include "components/wirecall/Address.h"
#include "components/wirecall/ServerListener.h"
#include "components/wirecall/UserShares.h"

#include <gnutls/gnutls.h>
#include <microhttpd.h>

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <iostream>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace centre {

namespace {

constexpr unsigned int kIdleSeconds = 30;
constexpr std::chrono::seconds kLongestRequest{
    60}; ///< from the connection's last answer to the whole request
constexpr std::size_t kConnectionMemory =
    std::size_t{16} * 1024; ///< for headers, and data on its way with TLS
constexpr std::uint64_t kMostBodies =
    std::uint64_t{64} * 1024 * 1024;      ///< bytes of bodies that arrive at once
constexpr int kMostConnections = 1000000; ///< of the library, which gets none beyond the listener's limits
constexpr char kPriorities[] = "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2";
/// Of one user at once, for what takes long; others have as many again.
const std::size_t kWorkersOfUser = std::size_t{2} * std::max(1U, std::thread::hardware_concurrency());
constexpr char kStopping[] = "the server is stopping";
constexpr char kNoOperation[] = "unknown";

std::string refusalOf(const char* reason)
{
    const std::string body = HttpResponse::problem(503, reason).body;
    return "HTTP/1.1 503 Service Unavailable\r\nContent-Type: application/json\r\nRetry-After: 1\r\n"
           "Connection: close\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// Leaves the escapes to readRequest, which is stricter.
std::size_t keepEscapes(void*, MHD_Connection*, char* text)
{
    return std::strlen(text);
}

bool hasBody(MHD_Connection& connection)
{
    const char* size = ::MHD_lookup_connection_value(&connection, MHD_HEADER_KIND, "Content-Length");
    return (size != nullptr && std::strcmp(size, "0") != 0) ||
           ::MHD_lookup_connection_value(&connection, MHD_HEADER_KIND, "Transfer-Encoding") != nullptr;
}

} // namespace

struct HttpServer::Impl
{
    explicit Impl(HttpServer& owner) : server(owner), routes(owner.m_Pool) {}

    // What the library calls.
    static MHD_Result handle(void* impl, MHD_Connection* connection, const char* path, const char* method,
                             const char*, const char* data, std::size_t* size, void** exchange);
    static void completed(void* impl, MHD_Connection*, void** exchange, MHD_RequestTerminationCode how);
    static void connectionChanged(void* impl, MHD_Connection* connection, void** context,
                                  MHD_ConnectionNotificationCode what);
    static int giveCertificate(gnutls_session_t session, const gnutls_datum_t*, int,
                               const gnutls_pk_algorithm_t*, int, gnutls_pcert_st** chain,
                               unsigned int* length, gnutls_privkey_t* key);

    void begin(MHD_Connection& connection, Exchange& exchange, const char* path, const char* method);
    void count(Exchange& exchange);
    bool answer(MHD_Connection& connection, Exchange& exchange, HttpResponse response);
    bool run(MHD_Connection& connection, Exchange& exchange);
    void startDaemon();
    void connected(int socket) const;
    void report(const Exchange& exchange);

    HttpServer& server;
    Routes routes;
    ListenOptions options;
    std::string address;
    std::string url;
    std::optional<TlsCertificate> certificate;
    std::optional<SlowClients> slowClients;
    wirecall::UserShares calls;
    std::atomic<std::uint64_t> bodies{0};
    mutable std::mutex mutex; ///< of the listener and of the end of requests
    std::condition_variable ended;
    int running = 0;
    std::atomic<bool> draining{false};
    MHD_Daemon* daemon = nullptr;
    std::unique_ptr<wirecall::ServerListener> listener;
    std::unique_ptr<Workers> workers;
};

namespace {

/// What a connection's context is.
struct Client
{
    TlsCertificate* certificate;
    SlowClients::Watched& watched;
};

Client& clientOf(MHD_Connection& connection)
{
    return *static_cast<Client*>(
        ::MHD_get_connection_info(&connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
}

} // namespace

MHD_Result HttpServer::Impl::handle(void* impl, MHD_Connection* connection, const char* path,
                                    const char* method, const char*, const char* data, std::size_t* size,
                                    void** exchange)
try {
    Impl& self = *static_cast<Impl*>(impl);
    if (*exchange == nullptr) {
        auto& begun = *new Exchange;
        *exchange = &begun;
        {
            const std::lock_guard<std::mutex> lock(self.mutex);
            ++self.running;
        }
        try {
            self.begin(*connection, begun, path, method);
        } catch (const HttpError& error) {
            begun.response = HttpResponse::problem(error.status(), error.what());
            if (error.status() == 405)
                begun.response->headers.emplace_back(
                    "Allow", begun.route->methods.front() == "GET" ? "GET, HEAD" : "POST");
        }
        // Without a body the library calls again at once; a response before that would close the connection.
        if (!begun.response || !hasBody(*connection))
            return MHD_YES;
    }
    auto& known = *static_cast<Exchange*>(*exchange);
    if (known.response)
        return self.answer(*connection, known, *std::exchange(known.response, {})) ? MHD_YES : MHD_NO;
    if (*size == 0)
        return self.run(*connection, known) ? MHD_YES : MHD_NO;
    known.request.body.append(data, *size);
    *size = 0;
    return known.request.body.size() <= known.bodySize ? MHD_YES : MHD_NO;
} catch (const std::exception& error) {
    std::cerr << "lumo-centre: HTTP: " + std::string(error.what()) + "\n";
    return MHD_NO;
}

void HttpServer::Impl::begin(MHD_Connection& connection, Exchange& exchange, const char* path,
                             const char* method)
{
    exchange.request.peer = peerOf(connection);
    exchange.request = readRequest(connection, path, method, options.httpUrl, certificate.has_value());
    if (draining)
        throw HttpError(503, kStopping);
    const std::uint64_t size = bodySizeOf(exchange.request);
    if (exchange.request.method == "OPTIONS") {
        exchange.response = preflight();
        return;
    }
    exchange.route = routes.find(exchange.request);
    if (exchange.route == nullptr)
        throw HttpError(404, "nothing is at this path");
    routes.admit(*exchange.route, exchange.request);
    count(exchange);
    if (bodies.fetch_add(size) + size > kMostBodies) {
        bodies -= size;
        throw HttpError(503, "too many large requests arrive at once");
    }
    exchange.bodySize = size;
}

void HttpServer::Impl::count(Exchange& exchange)
{
    const std::string& peer = exchange.request.peer;
    const std::string user = exchange.request.user ? exchange.request.user->name
                                                   : "requests of " + peer.substr(0, peer.rfind(':'));
    const std::size_t most =
        options.callsOfUser > 0 ? static_cast<std::size_t>(options.callsOfUser) : SIZE_MAX;
    if (!calls.take(user, 1, most))
        throw HttpError(429, "user " + user + " has as many requests under way as one may");
    exchange.counted = user;
}

bool HttpServer::Impl::run(MHD_Connection& connection, Exchange& exchange)
{
    SlowClients::arrived(clientOf(connection).watched);
    if (exchange.route->isQuick)
        return answer(connection, exchange, Routes::run(*exchange.route, exchange.request));
    // The library calls `handle` again once the connection is resumed.
    ::MHD_suspend_connection(&connection);
    const auto work = [this, &connection, &exchange] {
        exchange.response =
            draining ? HttpResponse::problem(503, kStopping) : Routes::run(*exchange.route, exchange.request);
        ::MHD_resume_connection(&connection);
    };
    std::unique_lock<std::mutex> lock(mutex);
    if (workers) {
        workers->push(exchange.counted, work);
        return true;
    }
    lock.unlock();
    work();
    return true;
}

bool HttpServer::Impl::answer(MHD_Connection& connection, Exchange& exchange, HttpResponse response)
{
    SlowClients::arrived(clientOf(connection).watched);
    addCommonHeaders(response);
    exchange.status = response.status;
    exchange.responseSize = exchange.request.method == "HEAD" ? 0
                            : response.file                   ? response.file->size
                                                              : response.body.size();
    // A body that was refused is not read, so that nothing can follow it.
    const bool isRefused = exchange.bodySize == 0 && hasBody(connection);
    return send(connection, std::move(response), draining || isRefused);
}

void HttpServer::Impl::completed(void* impl, MHD_Connection* connection, void** exchange,
                                 MHD_RequestTerminationCode how)
{
    Impl& self = *static_cast<Impl*>(impl);
    const std::unique_ptr<Exchange> done(static_cast<Exchange*>(*exchange));
    if (!done)
        return;
    *exchange = nullptr;
    SlowClients::expect(clientOf(*connection).watched);
    if (how != MHD_REQUEST_TERMINATED_COMPLETED_OK) {
        done->status = 0;
        done->responseSize = 0;
    }
    self.bodies -= done->bodySize;
    if (!done->counted.empty())
        self.calls.give(done->counted, 1);
    self.report(*done);
    const std::lock_guard<std::mutex> lock(self.mutex);
    --self.running;
    self.ended.notify_all();
}

void HttpServer::Impl::report(const Exchange& exchange)
{
    if (options.observer == nullptr)
        return;
    const ObservedCall call{exchange.route == nullptr ? kNoOperation : exchange.route->name,
                            exchange.request.peer, exchange.request.user ? exchange.request.user->name : "",
                            exchange.request.user ? exchange.request.user->companyName : ""};
    wirecall::CallReport report;
    report.outcome = outcomeOf(exchange.status);
    report.duration = std::chrono::steady_clock::now() - exchange.begin;
    report.bytesReceived = exchange.request.body.size();
    report.bytesSent = exchange.responseSize;
    options.observer->ended(server, call, report);
}

void HttpServer::Impl::connectionChanged(void* impl, MHD_Connection* connection, void** context,
                                         MHD_ConnectionNotificationCode what)
{
    Impl& self = *static_cast<Impl*>(impl);
    const int socket = ::MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    if (what == MHD_CONNECTION_NOTIFY_STARTED) {
        *context = new Client{self.certificate ? &*self.certificate : nullptr, self.slowClients->add(socket)};
        return;
    }
    const std::unique_ptr<Client> client(static_cast<Client*>(*context));
    self.slowClients->remove(client->watched);
    ::shutdown(socket, SHUT_RDWR); // by which the listener sees the end
}

int HttpServer::Impl::giveCertificate(gnutls_session_t session, const gnutls_datum_t*, int,
                                      const gnutls_pk_algorithm_t*, int, gnutls_pcert_st** chain,
                                      unsigned int* length, gnutls_privkey_t* key)
{
    auto& connection = *static_cast<MHD_Connection*>(::gnutls_session_get_ptr(session));
    clientOf(connection).certificate->give(chain, length, key);
    return 0;
}

void HttpServer::Impl::startDaemon()
{
    unsigned int flags = MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_NO_LISTEN_SOCKET;
    std::vector<MHD_OptionItem> items = {
        {MHD_OPTION_CONNECTION_LIMIT, kMostConnections, nullptr},
        {MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds, nullptr},
        {MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionMemory, nullptr},
        {MHD_OPTION_STRICT_FOR_CLIENT, 1, nullptr},
        {MHD_OPTION_THREAD_POOL_SIZE,
         static_cast<std::intptr_t>(std::max(4U, 2 * std::thread::hardware_concurrency())), nullptr},
        {MHD_OPTION_UNESCAPE_CALLBACK, reinterpret_cast<std::intptr_t>(&keepEscapes), nullptr},
        {MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<std::intptr_t>(&completed), this},
        {MHD_OPTION_NOTIFY_CONNECTION, reinterpret_cast<std::intptr_t>(&connectionChanged), this},
    };
    if (certificate) {
        flags |= MHD_USE_TLS;
        items.push_back({MHD_OPTION_HTTPS_CERT_CALLBACK, 0, reinterpret_cast<void*>(&giveCertificate)});
        items.push_back({MHD_OPTION_HTTPS_PRIORITIES, 0, const_cast<char*>(kPriorities)});
    }
    items.push_back({MHD_OPTION_END, 0, nullptr});
    daemon = ::MHD_start_daemon(flags, 0, nullptr, nullptr, &handle, this, MHD_OPTION_ARRAY, items.data(),
                                MHD_OPTION_END);
    if (daemon == nullptr)
        throw Error(ExitCode::Failed, "can't start the threads that serve HTTP on " + options.address);
}

void HttpServer::Impl::connected(int socket) const
{
    sockaddr_storage client = {};
    socklen_t length = sizeof client;
    if (::getpeername(socket, reinterpret_cast<sockaddr*>(&client), &length) != 0 ||
        ::MHD_add_connection(daemon, socket, reinterpret_cast<const sockaddr*>(&client), length) != MHD_YES) {
        ::shutdown(socket, SHUT_RDWR);
        ::close(socket);
    }
}

HttpServer::HttpServer(ConnectionPool& pool, std::string name)
    : m_Pool(pool), m_Name(std::move(name)), m_Impl(std::make_unique<Impl>(*this))
{
}

HttpServer::~HttpServer()
{
    stop();
}

void HttpServer::add(HttpRoute route)
{
    m_Impl->routes.add(std::move(route));
}

void HttpServer::start(const ListenOptions& options)
{
    Impl& self = *m_Impl;
    self.options = options;
    self.options.address = options.http;
    requireSafe(self.options);
    wirecall::Address address;
    wirecall::parseAddress(options.http, address);
    if (!options.tlsCertificate.empty())
        self.certificate.emplace(options.tlsCertificate, options.tlsKey);
    auto listener = std::make_unique<wirecall::ServerListener>();
    if (!listener->bind(address.host, address.port))
        throw Error(ExitCode::Failed, "can't listen on " + options.http +
                                          ": is the port in use, or the host not this machine?");
    self.address = options.http.substr(0, options.http.rfind(':') + 1) + std::to_string(listener->port());
    self.url = !options.httpUrl.empty() ? options.httpUrl
                                        : (self.certificate ? "https://" : "http://") + self.address;
    self.slowClients.emplace(kLongestRequest);
    self.workers = std::make_unique<Workers>(2 * kWorkersOfUser, kWorkersOfUser);
    self.startDaemon();
    if (options.observer != nullptr)
        options.observer->started(*this);
    const wirecall::ServerListener::Limits limits{options.connections, options.connectionsOfAddress,
                                                  self.certificate ? nullptr : refusalOf};
    std::string error;
    const bool isStarted = listener->start(
        limits, [&self](int socket) { self.connected(socket); }, error);
    {
        const std::lock_guard<std::mutex> lock(self.mutex);
        self.listener = std::move(listener);
    }
    if (!isStarted) {
        stop();
        throw Error(ExitCode::Failed, error);
    }
}

void HttpServer::stop()
{
    Impl& self = *m_Impl;
    if (self.daemon == nullptr)
        return;
    self.draining = true;
    std::unique_ptr<wirecall::ServerListener> listener;
    std::unique_ptr<Workers> workers;
    {
        const std::lock_guard<std::mutex> lock(self.mutex);
        listener.swap(self.listener);
    }
    listener.reset();
    {
        std::unique_lock<std::mutex> lock(self.mutex);
        self.ended.wait_for(lock, std::chrono::milliseconds(self.options.graceMilliseconds),
                            [&self] { return self.running == 0; });
    }
    {
        const std::lock_guard<std::mutex> lock(self.mutex);
        workers.swap(self.workers);
    }
    workers.reset(); // the library can't stop while a connection is suspended
    ::MHD_stop_daemon(std::exchange(self.daemon, nullptr));
    if (EndpointObserver* observer = std::exchange(self.options.observer, nullptr))
        observer->stopped(*this);
}

void HttpServer::reloadCertificate()
{
    if (m_Impl->certificate)
        m_Impl->certificate->load();
}

const std::string& HttpServer::address() const
{
    return m_Impl->address;
}

const std::string& HttpServer::url() const
{
    return m_Impl->url;
}

wirecall::RpcServer::Load HttpServer::load() const
{
    const std::lock_guard<std::mutex> lock(m_Impl->mutex);
    wirecall::RpcServer::Load load;
    if (m_Impl->listener) {
        load.connections = m_Impl->listener->connections();
        load.refusedConnections = m_Impl->listener->refused();
    }
    load.runningCalls = m_Impl->running;
    load.waiting = m_Impl->workers ? m_Impl->workers->waiting() : 0;
    return load;
}

} // namespace centre
