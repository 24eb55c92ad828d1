#ifndef LUMO_TESTS_HOSTILE_HOSTILESERVER_H
#define LUMO_TESTS_HOSTILE_HOSTILESERVER_H

#include <grpcpp/impl/codegen/async_generic_service.h>
#include <grpcpp/server.h>
#include <grpcpp/support/byte_buffer.h>
#include <grpcpp/support/status.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// `times` the bytes of `piece`, which it holds once.
grpc::ByteBuffer repeated(const std::string& piece, std::size_t times);
/// A message with `count` messages without content in the field `field`: two bytes each.
grpc::ByteBuffer emptyMessages(int field, std::size_t count);
/// A message with `mebibytes` MiB of zeros in the field `field`.
grpc::ByteBuffer zeros(int field, std::size_t mebibytes);

/// Makes `calls` calls of `method` ("/package.Service/method") at once, all with `request`, and waits for
/// them.
std::vector<grpc::Status> callAtOnce(const std::string& address, const std::string& token,
                                     const std::string& method, int calls, const grpc::ByteBuffer& request,
                                     bool gzip);

/// Answers any method of any service, on a free loopback port, with bytes of the test's choice.
class HostileServer
{
public:
    struct Answer
    {
        grpc::ByteBuffer message;
        bool gzip = false;
    };
    /// `method` is the name without its service; `request` are the bytes of the request.
    using Answers = std::function<Answer(const std::string& method, const std::string& request)>;

    explicit HostileServer(Answers answers);
    ~HostileServer();

    int port() const { return m_Port; }
    std::string address() const { return "127.0.0.1:" + std::to_string(m_Port); }

private:
    class Service : public grpc::CallbackGenericService
    {
    public:
        explicit Service(Answers answers) : m_Answers(std::move(answers)) {}
        grpc::ServerGenericBidiReactor* CreateReactor(grpc::GenericCallbackServerContext* context) override;

    private:
        Answers m_Answers;
    };

    Service m_Service;
    int m_Port = 0;
    std::unique_ptr<grpc::Server> m_Server;
};

#endif
