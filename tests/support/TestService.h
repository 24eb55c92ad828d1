#ifndef LUMO_TESTS_SUPPORT_TESTSERVICE_H
#define LUMO_TESTS_SUPPORT_TESTSERVICE_H

#include "hubline.pb.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <functional>

/// The hello service with an answer of the test's choice; `done` must be run once.
class TestService : public hubline::HubServices
{
public:
    using Answer = std::function<void(wirecall::ServerCall& call, const hubline::HelloReq& request,
                                      hubline::HelloRsp& response, google::protobuf::Closure* done)>;

    explicit TestService(Answer answer = nullptr) : m_Answer(std::move(answer)) {}

    void hello(google::protobuf::RpcController* controller, const hubline::HelloReq* request,
               hubline::HelloRsp* response, google::protobuf::Closure* done) override
    {
        if (m_Answer)
            m_Answer(*static_cast<wirecall::ServerCall*>(controller), *request, *response, done);
        else
            done->Run();
    }

private:
    Answer m_Answer;
};

/// A server on a free loopback port that accepts the token "open sesame", or any token.
class TestServer
{
public:
    static constexpr char kToken[] = "open-sesame";

    explicit TestServer(google::protobuf::Service& service, bool anyToken = true,
                        const std::string& certificate = {}, const std::string& key = {})
    {
        wirecall::RpcServer::Options options;
        options.address = "127.0.0.1:0";
        options.tlsCertificate = certificate;
        options.tlsKey = key;
        options.threads = 4;
        if (!anyToken)
            options.authenticate = [](const wirecall::ServerCall& call, std::string& reason) {
                reason = "wrong token";
                return call.token() == kToken;
            };
        m_Server.add(&service);
        m_Started = m_Server.start(options, m_Error);
    }

    bool started() const { return m_Started; }
    const std::string& error() const { return m_Error; }
    std::string address() const { return "127.0.0.1:" + std::to_string(m_Server.port()); }
    void stop(int graceMilliseconds = 2000) { m_Server.stop(graceMilliseconds); }

private:
    wirecall::RpcServer m_Server;
    bool m_Started = false;
    std::string m_Error;
};

#endif
