#ifndef LUMO_WIRECALL_STREAMMESSAGES_H
#define LUMO_WIRECALL_STREAMMESSAGES_H

#include "components/wirecall/Streams.h"

#include <google/protobuf/message.h>
#include <grpcpp/support/byte_buffer.h>

namespace wirecall {

/// Puts a message together: the head, then field 15 with the data, which is not copied.
grpc::ByteBuffer assemble(const google::protobuf::Message& head, OutgoingBuffer data);

/// Takes a message apart; both results are replaced. Returns false when it can't be parsed. Data that is not
/// the last field is copied once.
bool takeApart(grpc::ByteBuffer message, google::protobuf::Message& head, Payload& data);

} // namespace wirecall

#endif
