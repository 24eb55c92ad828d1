#ifndef LUMO_WIRECALL_BOUNDEDMESSAGE_H
#define LUMO_WIRECALL_BOUNDEDMESSAGE_H

#include <google/protobuf/message.h>
#include <grpcpp/impl/codegen/serialization_traits.h>
#include <grpcpp/support/byte_buffer.h>
#include <grpcpp/support/status.h>

#include <cstddef>
#include <functional>

namespace wirecall {

/// Returns how much of `most` bytes may arrive: less where the process has a limit of its address space
/// (ulimit -v), since gRPC crashes when it gets no memory.
std::size_t mayArrive(std::size_t most);

/// Parses what has arrived in `buffer`, which is released meanwhile, unless it would take more than `memory`
/// bytes as `message`: a message without content has two bytes on the wire, but hundreds in memory. `admit`
/// judges what it would take, in bytes. Returns notParsed() for bytes that are no such message, and
/// RESOURCE_EXHAUSTED above `memory` or when `admit` returns false.
grpc::Status parseBounded(grpc::ByteBuffer& buffer, google::protobuf::Message& message, std::size_t memory,
                          const std::function<bool(std::size_t)>& admit = nullptr);

/// The failure of a call whose user holds too much already.
grpc::Status heldTooMuch();

/// The failure of a message that is malformed.
grpc::Status notParsed();

/// The answer of a call of gRPC, in place of the message itself: parsed within kMostAnswerMemory.
class BoundedAnswer
{
public:
    explicit BoundedAnswer(google::protobuf::Message& message) : m_Message(message) {}

    /// Returns why the answer was refused, or else the status of the call.
    const grpc::Status& outcome(const grpc::Status& ofCall) const
    {
        return m_Parsed.ok() ? ofCall : m_Parsed;
    }

    void parse(grpc::ByteBuffer& buffer);

private:
    google::protobuf::Message& m_Message;
    grpc::Status m_Parsed;
};

} // namespace wirecall

template <>
class grpc::SerializationTraits<wirecall::BoundedAnswer, void>
{
public:
    /// Always succeeds: gRPC would drop the reason of a failure, which `outcome` returns.
    static grpc::Status Deserialize(grpc::ByteBuffer* buffer, wirecall::BoundedAnswer* answer)
    {
        answer->parse(*buffer);
        return grpc::Status::OK;
    }
};

#endif
