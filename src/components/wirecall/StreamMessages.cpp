#include "components/wirecall/StreamMessages.h"

#include "components/wirecall/HandOver.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>
#include <grpcpp/support/proto_buffer_reader.h>
#include <grpcpp/support/slice.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace wirecall {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::internal::WireFormatLite;
using google::protobuf::io::CodedInputStream;
using google::protobuf::io::CodedOutputStream;

struct Payload::Memory
{
    std::vector<grpc::Slice> slices;
};

Payload::Payload() = default;
Payload::~Payload() = default;
Payload::Payload(Payload&& other) noexcept = default;
Payload& Payload::operator=(Payload&& other) noexcept = default;

Payload::Payload(std::unique_ptr<Memory> memory, std::vector<iovec> pieces)
    : m_Memory(std::move(memory)), m_Pieces(std::move(pieces))
{
}

std::size_t Payload::size() const
{
    return std::accumulate(m_Pieces.begin(), m_Pieces.end(), std::size_t(0),
                           [](std::size_t sum, const iovec& piece) { return sum + piece.iov_len; });
}

OutgoingBuffer::OutgoingBuffer(std::size_t size) : m_Size(size)
{
    if (size > kLargest)
        throw std::length_error("a message may not have " + std::to_string(size) + " bytes of data");
    if (size > 0)
        m_Data.reset(new char[size]);
}

namespace {

constexpr std::size_t kLargestStreamMessage = 2 * OutgoingBuffer::kLargest;
constexpr int kDataField = 15;
constexpr std::uint32_t kDataTag =
    WireFormatLite::MakeTag(kDataField, WireFormatLite::WIRETYPE_LENGTH_DELIMITED);

void freeData(void* data)
{
    takeOver(data);
    delete[] static_cast<char*>(data);
}

/// Returns what `message` holds from the byte `begin` on.
Payload payloadFrom(const grpc::ByteBuffer& message, std::size_t begin)
{
    auto memory = std::make_unique<Payload::Memory>();
    std::vector<iovec> pieces;
    message.Dump(&memory->slices);
    for (const grpc::Slice& slice : memory->slices) {
        const std::size_t skipped = std::min(begin, slice.size());
        begin -= skipped;
        if (skipped < slice.size())
            pieces.push_back({const_cast<std::uint8_t*>(slice.begin()) + skipped, slice.size() - skipped});
    }
    return Payload(std::move(memory), std::move(pieces));
}

/// Returns the head's length and where the data begins, if the data is the last field or absent.
std::optional<std::pair<int, int>> divide(grpc::ByteBuffer& message)
{
    const std::size_t length = message.Length();
    grpc::ProtoBufferReader reader(&message);
    CodedInputStream input(&reader);
    for (;;) {
        const int position = input.CurrentPosition();
        const std::uint32_t tag = input.ReadTag();
        std::uint32_t size = 0;
        const bool atEnd = tag == kDataTag ? input.ReadVarint32(&size) : tag == 0;
        if (atEnd && static_cast<std::size_t>(input.CurrentPosition()) + size == length)
            return std::make_pair(position, input.CurrentPosition());
        if (tag == kDataTag || tag == 0 || !WireFormatLite::SkipField(&input, tag))
            return std::nullopt;
    }
}

/// Takes the data out of a message that the ordinary parser has read.
Payload takeData(Message& message)
{
    const FieldDescriptor* field = message.GetDescriptor()->FindFieldByNumber(kDataField);
    if (field == nullptr || field->type() != FieldDescriptor::TYPE_BYTES || field->is_repeated() ||
        !message.GetReflection()->HasField(message, field))
        return {};
    const grpc::Slice data(message.GetReflection()->GetString(message, field));
    message.GetReflection()->ClearField(&message, field);
    return payloadFrom(grpc::ByteBuffer(&data, 1), 0);
}

} // namespace

grpc::ByteBuffer assemble(const Message& head, OutgoingBuffer data)
{
    std::string bytes = head.SerializeAsString();
    if (data.size() == 0) {
        const grpc::Slice slice(bytes);
        return grpc::ByteBuffer(&slice, 1);
    }
    std::uint8_t prefix[10];
    std::uint8_t* end = CodedOutputStream::WriteTagToArray(kDataTag, prefix);
    end = CodedOutputStream::WriteVarint32ToArray(static_cast<std::uint32_t>(data.size()), end);
    bytes.append(prefix, end);
    const std::size_t size = data.size();
    char* memory = data.release().release();
    handOver(memory);
    const grpc::Slice slices[] = {grpc::Slice(bytes), grpc::Slice(memory, size, freeData)};
    return grpc::ByteBuffer(slices, 2);
}

bool takeApart(grpc::ByteBuffer message, Message& head, Payload& data)
{
    data = Payload();
    if (!message.Valid() || message.Length() > kLargestStreamMessage)
        return false;
    grpc::ProtoBufferReader reader(&message);
    const auto division = divide(message);
    if (!division) {
        if (!head.ParseFromZeroCopyStream(&reader))
            return false;
        data = takeData(head);
        return true;
    }
    if (!head.ParseFromBoundedZeroCopyStream(&reader, division->first))
        return false;
    data = payloadFrom(message, static_cast<std::size_t>(division->second));
    return true;
}

} // namespace wirecall
