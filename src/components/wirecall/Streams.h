#ifndef LUMO_WIRECALL_STREAMS_H
#define LUMO_WIRECALL_STREAMS_H

#include "lumo/components/platform/Export.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"

#include <google/protobuf/message.h>

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include <sys/uio.h>

/// Streams of messages that carry data. Such a message has small fields, its head, and the bytes field 15,
/// its data, which this side sends last. The data is never copied: it is sent from the buffer that the sender
/// filled and read where it arrived. On the wire a message is ordinary protobuf.
namespace wirecall {

/// The data of a message that arrived, in the pieces in which it lies in memory. Empty for a message without
/// data. The pieces are valid while the object lives, also after it was moved.
class LUMO_EXPORT Payload
{
public:
    struct Memory; ///< what holds the pieces

    Payload();
    ~Payload();
    Payload(Payload&& other) noexcept;
    Payload& operator=(Payload&& other) noexcept;
    /// For the runtime.
    Payload(std::unique_ptr<Memory> memory, std::vector<iovec> pieces);

    const std::vector<iovec>& pieces() const { return m_Pieces; }
    /// The length of all pieces together, in bytes.
    std::size_t size() const;

private:
    std::unique_ptr<Memory> m_Memory;
    std::vector<iovec> m_Pieces;
};

/// The data of a message that will be sent: memory that the sender fills. Empty: a message without data.
class LUMO_EXPORT OutgoingBuffer
{
public:
    static constexpr std::size_t kLargest = std::size_t(1024) * 1024;

    OutgoingBuffer() = default;
    /// Takes `size` bytes, not initialised. Throws std::length_error above kLargest.
    explicit OutgoingBuffer(std::size_t size);

    char* data() { return m_Data.get(); }
    std::size_t size() const { return m_Data ? m_Size : 0; }
    /// Gives the memory away, for the runtime; the buffer is empty then.
    std::unique_ptr<char[]> release() { return std::move(m_Data); }

private:
    std::unique_ptr<char[]> m_Data;
    std::size_t m_Size = 0;
};

/// The client's side of a call with a stream of answers.
///
/// The controller holds the settings, and the outcome once `read` has returned false; it must live as long as
/// the reader. A channel that can't stream fails it with NotImplemented. Its time limit is that of the whole
/// stream; its stall limit, that of each wait. A destroyed reader cancels what still runs. `cancel` is safe
/// from any thread, everything else from one at a time.
class LUMO_EXPORT StreamReader
{
public:
    StreamReader(RpcChannel& channel, const google::protobuf::MethodDescriptor& method,
                 RpcController& controller, const google::protobuf::Message& request);
    ~StreamReader();

    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;

    /// Waits for the next message. Both arguments are replaced; the data is not in `head`. Returns false
    /// when the stream has ended or failed; the controller has the outcome then.
    bool read(google::protobuf::Message& head, Payload& payload);
    /// Ends the stream early: `read` returns false, and the controller fails.
    void cancel();

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

/// The client's side of a call with a stream of requests. What StreamReader says of the controller, of
/// threads and of the end applies here, too; the outcome is there when `finish` has returned.
class LUMO_EXPORT StreamWriter
{
public:
    StreamWriter(RpcChannel& channel, const google::protobuf::MethodDescriptor& method,
                 RpcController& controller);
    ~StreamWriter();

    StreamWriter(const StreamWriter&) = delete;
    StreamWriter& operator=(const StreamWriter&) = delete;

    /// Sends a message; `head` must not have field 15. Returns while the message is still being sent, so that
    /// the next one can be prepared meanwhile, but waits for the one before. Returns false when the server
    /// has answered already or the stream has failed; `finish` then says which.
    bool write(const google::protobuf::Message& head, OutgoingBuffer data);
    /// Ends the stream and waits for the answer, which replaces `response`. Returns whether it came.
    bool finish(google::protobuf::Message& response);
    /// Ends the stream early: `write` returns false, and `finish` fails.
    void cancel();

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

/// The messages of a stream of answers, see sendStream.
class StreamSource
{
public:
    virtual ~StreamSource() = default;
    /// Fills the next message: its head is the method's response, which is cleared before; `data` is empty
    /// before. Returns false, and no message, at the end of the stream. The stream fails after `SetFailed`,
    /// or when this throws.
    virtual bool next(OutgoingBuffer& data) = 0;
    /// Whether the next message, or the end, is not there yet; wakeStream then says when it is.
    virtual bool isWaiting() { return false; }
};

/// What a service does with the messages of a stream of requests, see receiveStream.
class StreamSink
{
public:
    virtual ~StreamSink() = default;
    /// Takes a message, whose head is the method's request. Returns false to end the stream now; the method's
    /// response is the answer. The stream fails after `SetFailed`, or when this throws.
    virtual bool take(const Payload& data) = 0;
    /// All messages have been taken. The method's response is the answer.
    virtual void finish() = 0;
};

/// Answers a call with a stream. A method that is declared with a stream of answers calls this once with its
/// controller and returns without running its closure. (If it runs its closure instead, its response is the
/// only message, or the failure the outcome, as for any other method.)
///
/// The source is used on a thread for methods, never on two at once, and at most one message ahead of the one
/// that is being sent. It waits for no client, so a slow one holds no thread. It is destroyed when the stream
/// was sent, the caller has gone or the server stops. Throws std::logic_error unless `call` is the controller
/// of such a method.
LUMO_EXPORT void sendStream(google::protobuf::RpcController* call, std::unique_ptr<StreamSource> source);

/// Has a stream look again whether its source still waits. Safe from any thread until the closure runs that
/// the controller got by NotifyOnCancel.
LUMO_EXPORT void wakeStream(google::protobuf::RpcController* call);

/// Receives a stream. The server calls a method that is declared with a stream of requests when the first
/// message has come. The method calls this once with its controller and returns without running its closure.
/// (If it runs its closure instead, its response is the answer, and the rest of the stream is not read.)
///
/// The sink takes all messages, the first included, on a thread for methods, never on two at once; one
/// message is received meanwhile. It is destroyed when the call was answered, or, without `finish`, when the
/// caller has gone or the server stops. Throws std::logic_error unless `call` is the controller of such a
/// method.
LUMO_EXPORT void receiveStream(google::protobuf::RpcController* call, std::unique_ptr<StreamSink> sink);

} // namespace wirecall

#endif
