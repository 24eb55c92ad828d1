#ifndef LUMO_BENCH_WORLD_H
#define LUMO_BENCH_WORLD_H

#include "centre/server/Centre.h"
#include "centre/store/Store.h"
#include "ledgerserver.grpc.pb.h"
#include "lumo/components/logger/LumoLogger.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/core/LumoDataMgr.h"

#include <grpcpp/create_channel.h>

#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

/// A centre in this process, with the library and a bare gRPC generated stub connected to it. There may be
/// one at a time.
class World
{
public:
    using BareStub = ledgerserver::bare::LedgerServices::Stub;

    /// `fill` puts records into the store of the company LUMO before the centre serves it.
    explicit World(const std::function<void(centre::Store&)>& fill)
        : m_Token(centre::Store::create(folder(), "LUMO", "demo"))
    {
        CLumoLogger::GetSinglePton()->toCallback({});
        centre::Store store(folder());
        fill(store);
        centre::ServeOptions serving;
        serving.callsOfUser = 0; // one user has a thousand calls outstanding
        m_Centre = std::make_unique<centre::Centre>(folder(), serving);

        std::string error;
        wirecall::ChannelOptions options;
        options.address = m_Centre->address();
        options.token = m_Token;
        m_Channel = wirecall::openChannel(options, error);
        if (!m_Channel)
            throw std::runtime_error(error);
        if (manager().initDataMgr(m_Channel.get(), m_Channel.get(), m_Token.c_str(), "demo", "LUMO",
                                  kTimeout) != INIT_SUCCESS)
            throw std::runtime_error("the library did not connect");

        grpc::ChannelArguments arguments;
        arguments.SetMaxReceiveMessageSize(-1);
        m_BareChannel =
            grpc::CreateCustomChannel(m_Centre->address(), grpc::InsecureChannelCredentials(), arguments);
        m_Bare = ledgerserver::bare::LedgerServices::NewStub(m_BareChannel);
    }

    static CLumoDataMgr& manager() { return CLumoDataMgr::GetSingleTon(); }

    const std::shared_ptr<grpc::Channel>& bareChannel() const { return m_BareChannel; }

    /// Gives a bare call the time limit and the token that the library's have.
    void authorize(grpc::ClientContext& context) const
    {
        context.set_deadline(std::chrono::system_clock::now() + std::chrono::milliseconds(kTimeout));
        context.AddMetadata("authorization", "Bearer " + m_Token);
    }

    template <class Request, class Response>
    bool bare(grpc::Status (BareStub::*operation)(grpc::ClientContext*, const Request&, Response*),
              const Request& request, Response& response) const
    {
        grpc::ClientContext context;
        authorize(context);
        return (m_Bare.get()->*operation)(&context, request, &response).ok();
    }

    /// Fetches and parses all pages of a list; the number of records, -1 on a failure. `size` is the
    /// response's member with the length of its list.
    template <class Request, class Response>
    int barePages(grpc::Status (BareStub::*total)(grpc::ClientContext*, const Request&, Response*),
                  grpc::Status (BareStub::*page)(grpc::ClientContext*, const Request&, Response*),
                  Request request, int (Response::*size)() const) const
    {
        Response response;
        if (!bare(total, request, response))
            return -1;
        const int expected = response.total();
        request.set_page_size(kPageSize);
        int received = 0;
        while (received < expected) {
            request.set_page_start(received);
            if (!bare(page, request, response) || (response.*size)() == 0)
                return -1;
            received += (response.*size)();
        }
        return received;
    }

private:
    static constexpr unsigned int kTimeout = 30000; // milliseconds
    static constexpr int kPageSize = 10000;         // as the library's

    std::string folder() const { return m_Folder.filePath("data").toStdString(); }

    QTemporaryDir m_Folder;
    std::string m_Token;
    std::unique_ptr<centre::Centre> m_Centre;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
    std::shared_ptr<grpc::Channel> m_BareChannel;
    std::unique_ptr<BareStub> m_Bare;
};

#endif
