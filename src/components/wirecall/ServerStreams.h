#ifndef LUMO_WIRECALL_SERVERSTREAMS_H
#define LUMO_WIRECALL_SERVERSTREAMS_H

#include "components/wirecall/Streams.h"

#include <google/protobuf/message.h>
#include <grpcpp/support/byte_buffer.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace wirecall {

/// A call on the server as its stream uses it. Each step that is begun, one at a time, ends in
/// ServerStream::stepEnded.
class StreamCall
{
public:
    virtual ~StreamCall() = default;
    /// Makes the call's stream out of what the method gives. Throws std::logic_error if it can't have such.
    virtual void give(std::unique_ptr<StreamSource> source) = 0;
    virtual void give(std::unique_ptr<StreamSink> sink) = 0;

    virtual void send(const grpc::ByteBuffer& message) = 0;
    virtual void receive(grpc::ByteBuffer& message) = 0;
    /// A step that succeeds if the caller still waits for the answer.
    virtual void confirm() = 0;
    virtual void setFailed(const std::string& reason) = 0;
    /// Has the stream, if there is one, work.
    virtual void wake() = 0;
    /// Ends the call: `withAnswer` with the response. The stream may be gone when this returns.
    virtual void end(bool withAnswer) = 0;
};

/// The messages of one call. Safe from any thread; whichever comes works until there is nothing more to do
/// now, and waits for nothing.
class ServerStream
{
public:
    virtual ~ServerStream() = default;
    virtual void work() = 0;
    virtual void stepEnded(bool ok) = 0;
    /// Whether another thread works, which will also do what a step that ends now leaves to do.
    virtual bool isAtWork() const = 0;
};

/// Sends what a source has: prepares a message while the one before is being sent.
class OutgoingStream final : public ServerStream
{
public:
    OutgoingStream(StreamCall& call, std::unique_ptr<StreamSource> source, google::protobuf::Message& head);
    void work() override;
    void stepEnded(bool ok) override;
    bool isAtWork() const override { return m_Preparing; }

private:
    bool prepare(grpc::ByteBuffer& message);

    StreamCall& m_Call;
    std::unique_ptr<StreamSource> m_Source;
    google::protobuf::Message& m_Head;
    std::mutex m_Mutex; ///< guards what follows
    grpc::ByteBuffer m_Next;
    bool m_IsPrepared = false;            ///< the next message
    std::atomic<bool> m_Preparing{false}; ///< read without the mutex, too
    bool m_Sending = false;
    bool m_AtEnd = false; ///< no message follows
};

/// Gives what arrives to a sink: receives a message while the one before is being taken.
class IncomingStream final : public ServerStream
{
public:
    IncomingStream(StreamCall& call, std::unique_ptr<StreamSink> sink, google::protobuf::Message& head,
                   const grpc::ByteBuffer& first);
    void work() override;
    void stepEnded(bool ok) override;
    bool isAtWork() const override { return m_Taking; }

private:
    bool take(const grpc::ByteBuffer& message);
    bool finish();

    StreamCall& m_Call;
    std::unique_ptr<StreamSink> m_Sink;
    google::protobuf::Message& m_Head;
    std::mutex m_Mutex; ///< guards what follows
    grpc::ByteBuffer m_Next;
    bool m_HasArrived = true;          ///< the next message
    std::atomic<bool> m_Taking{false}; ///< read without the mutex, too
    bool m_Confirming = false;
    bool m_AllCame = false;
    bool m_Over = false; ///< the sink gets nothing more
};

} // namespace wirecall

#endif
