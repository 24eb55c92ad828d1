#include "centre/Centre.h"

#include "centre/ConnectionPool.h"
#include "centre/Error.h"
#include "centre/LedgerOperations.h"
#include "centre/Schema.h"
#include "centre/ServeLock.h"
#include "components/wirecall/Address.h"
#include "components/wirecall/RpcServer.h"
#include "hubline.pb.h"
#include "ledgerserver.pb.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <unistd.h>

namespace centre {

namespace {

using google::protobuf::Closure;
using google::protobuf::Message;
using google::protobuf::MethodDescriptor;
using google::protobuf::RpcController;

constexpr int kKilled = 137;

using Handler =
    std::function<void(const MethodDescriptor&, RpcController*, const Message&, Message&, Closure*)>;

/// A generated service, all of whose calls go to one function.
template <class Service>
class Forwarded : public Service
{
public:
    explicit Forwarded(Handler handler) : m_Handler(std::move(handler)) {}

    void CallMethod(const MethodDescriptor* method, RpcController* controller, const Message* request,
                    Message* response, Closure* done) override
    {
        m_Handler(*method, controller, *request, *response, done);
    }

private:
    Handler m_Handler;
};

void setResult(Message& response, std::int32_t result)
{
    response.GetReflection()->SetInt32(&response, response.GetDescriptor()->FindFieldByName("result"),
                                       result);
}

/// Locks only what is a data folder, so that no lock file is left in any other.
std::unique_ptr<ServeLock> lockDataFolder(const std::string& dataFolder)
{
    openDatabase(dataFolder);
    return std::make_unique<ServeLock>(dataFolder);
}

} // namespace

struct Centre::Impl
{
    explicit Impl(const std::string& dataFolder)
        : lock(lockDataFolder(dataFolder)),
          pool(dataFolder),
          ledger([this](const MethodDescriptor& method, RpcController* controller, const Message& request,
                        Message& response,
                        Closure* done) { call(method, controller, request, response, done); }),
          hub([this](const MethodDescriptor& method, RpcController* controller, const Message& request,
                     Message& response, Closure* done) { call(method, controller, request, response, done); })
    {
    }

    /// Finds each method's operation and prepares all once, so that a mistake shows at the start.
    void prepareOperations()
    {
        ConnectionPool::Lease connection(pool);
        const auto& service = *ledgerserver::LedgerServices::descriptor();
        for (const Operation& operation : ledgerOperations()) {
            const MethodDescriptor* method = service.FindMethodByName(operation.name);
            connection->query(operation, *method);
            operations.emplace(method, &operation);
        }
    }

    void addFault(const std::string& text)
    {
        const std::string operation = faults.add(text).operation;
        const MethodDescriptor* method = ledger.GetDescriptor()->FindMethodByName(operation);
        if (!method)
            method = hub.GetDescriptor()->FindMethodByName(operation);
        if (!method)
            throw Error(ExitCode::WrongUse,
                        "there is no operation " + operation + " to fault; operations are" +
                            " named as in the catalogue service, for example queryDataAddress");
        if (text.find("=result:") != std::string::npos && !method->output_type()->FindFieldByName("result"))
            throw Error(ExitCode::WrongUse,
                        operation + " has no result to fault; it can stall, exit or refuse");
    }

    bool authenticate(const wirecall::ServerCall& serverCall, std::string& reason)
    {
        const std::string token = serverCall.token();
        try {
            if (token.empty())
                reason = "the call carries no token";
            else if (!ConnectionPool::Lease(pool)->knowsToken(token))
                reason = "the token is not that of a user of this centre";
        } catch (const std::exception& exception) {
            std::cerr << "lumo-centre: checking a token: " + std::string(exception.what()) + "\n";
            reason = "the token can't be checked now";
        }
        return reason.empty();
    }

    void call(const MethodDescriptor& method, RpcController* controller, const Message& request,
              Message& response, Closure* done)
    {
        const std::optional<Fault> fault = faults.fires(method.name());
        if (fault && fault->kind == Fault::Kind::Stall)
            return controller->NotifyOnCancel(done); // the caller has gone, or the server stops
        if (!fault)
            answer(method, request, response);
        else if (fault->kind == Fault::Kind::Exit)
            ::_exit(kKilled);
        else if (fault->kind == Fault::Kind::Refuse)
            controller->SetFailed("refused by a fault switch");
        else
            setResult(response, fault->result);
        done->Run();
    }

    void answer(const MethodDescriptor& method, const Message& request, Message& response)
    {
        if (method.service() == hub.GetDescriptor()) {
            static_cast<hubline::HelloRsp&>(response).set_server("lumo-centre");
            return;
        }
        try {
            ConnectionPool::Lease connection(pool);
            connection->query(*operations.at(&method), method).answer(request, response);
        } catch (const std::exception& exception) {
            std::cerr << "lumo-centre: " + method.name() + ": " + exception.what() + "\n";
            response.Clear();
            setResult(response, kError);
        }
    }

    // Destroyed from the bottom up: first the server, whose calls use what stands above it.
    std::unique_ptr<ServeLock> lock;
    ConnectionPool pool;
    Faults faults;
    std::unordered_map<const MethodDescriptor*, const Operation*> operations;
    Forwarded<ledgerserver::LedgerServices> ledger;
    Forwarded<hubline::HubServices> hub;
    std::string address;
    std::unique_ptr<wirecall::RpcServer> server;
};

namespace {

void requireSafe(const ServeOptions& options)
{
    wirecall::Address address;
    if (!wirecall::parseAddress(options.address, address))
        throw Error(ExitCode::WrongUse, "not an address: " + options.address + "; an address is HOST:PORT");
    if (options.tlsCertificate.empty() != options.tlsKey.empty())
        throw Error(ExitCode::WrongUse, "a TLS certificate and its key go together");
    if (options.tlsCertificate.empty() && !options.plainText && !wirecall::isLoopbackHost(address.host))
        throw Error(ExitCode::WrongUse,
                    options.address + " can be reached from other machines: give --tls-cert and --tls-key,"
                                      " or --plain-text if everyone on the way may read along");
}

} // namespace

Centre::Centre(const std::string& dataFolder, const ServeOptions& options)
{
    requireSafe(options);
    m_Impl = std::make_unique<Impl>(dataFolder);
    m_Impl->prepareOperations();
    for (const std::string& text : options.faults)
        m_Impl->addFault(text);

    m_Impl->server = std::make_unique<wirecall::RpcServer>();
    m_Impl->server->add(&m_Impl->ledger);
    m_Impl->server->add(&m_Impl->hub);
    wirecall::RpcServer::Options serverOptions;
    serverOptions.address = options.address;
    serverOptions.tlsCertificate = options.tlsCertificate;
    serverOptions.tlsKey = options.tlsKey;
    serverOptions.authenticate = [impl = m_Impl.get()](const wirecall::ServerCall& call,
                                                       std::string& reason) {
        return impl->authenticate(call, reason);
    };
    std::string error;
    if (!m_Impl->server->start(serverOptions, error))
        throw Error(ExitCode::Failed, error);
    const std::string hostAndColon = options.address.substr(0, options.address.rfind(':') + 1);
    m_Impl->address = hostAndColon + std::to_string(m_Impl->server->port());
}

Centre::~Centre()
{
    stop();
}

int Centre::port() const
{
    return m_Impl->server->port();
}

std::string Centre::address() const
{
    return m_Impl->address;
}

void Centre::stop()
{
    m_Impl->server->stop();
    m_Impl->lock.reset();
}

std::vector<FaultCount> Centre::faultCounts() const
{
    return m_Impl->faults.counts();
}

} // namespace centre
