#include "components/wirecall/BoundedMessage.h"

#include "components/wirecall/WireLimits.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream.h>
#include <google/protobuf/wire_format_lite.h>
#include <grpcpp/support/slice.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace wirecall {

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::internal::WireFormatLite;
using google::protobuf::io::CodedInputStream;

/// A message of no more bytes takes at most some 30 MiB, and is not estimated.
constexpr std::size_t kSmall = std::size_t(64) * 1024;
constexpr int kDeepest = 100; // as protobuf's own limit
constexpr std::size_t kAllocation = 16;
constexpr std::size_t kText = 32 + kAllocation;
constexpr std::size_t kTextInside = 15; // bytes that need no memory beside the text's own
/// An array has up to twice as many places as elements.
constexpr std::size_t kPlace = 2 * sizeof(void*);
constexpr std::size_t kUnknownField = 32;
/// The least that an element of a list counts for, since its receiver makes a record of some KiB of it.
constexpr std::size_t kLeastElement = 2048;
/// The part of what is left of the address space that may arrive; threads and the heap need the rest.
constexpr std::size_t kShareOfAddressSpace = 4;
constexpr std::size_t kLeastArriving = 4 * kMebibyte;

/// The bytes of a buffer. Those that were read are released when the stream is a releasing one.
class SliceStream : public google::protobuf::io::ZeroCopyInputStream
{
public:
    SliceStream(std::vector<grpc::Slice>& slices, bool releasing) : m_Slices(slices), m_Releasing(releasing)
    {
    }

    bool Next(const void** data, int* size) override
    {
        if (m_Back == 0) {
            if (m_Releasing && m_Next > 0)
                m_Slices[m_Next - 1] = grpc::Slice();
            if (m_Next == m_Slices.size())
                return false;
            m_Back = static_cast<int>(m_Slices[m_Next++].size());
            m_Count += m_Back;
        }
        const grpc::Slice& slice = m_Slices[m_Next - 1];
        *data = slice.end() - m_Back;
        *size = std::exchange(m_Back, 0);
        return true;
    }

    void BackUp(int count) override { m_Back = count; }

    bool Skip(int count) override
    {
        const void* data = nullptr;
        int size = 0;
        while (count > 0 && Next(&data, &size))
            count -= size;
        if (count < 0)
            BackUp(-count);
        return count <= 0;
    }

    int64_t ByteCount() const override { return m_Count - m_Back; }

private:
    std::vector<grpc::Slice>& m_Slices;
    const bool m_Releasing;
    std::size_t m_Next = 0; ///< the slice after the current one
    int m_Back = 0;         ///< the bytes at the end of the current slice that come next
    std::int64_t m_Count = 0;
};

/// Estimates what a serialized message takes once it is parsed. It goes by the fields' descriptors, and never
/// estimates less than the parser would take.
class Estimate
{
public:
    Estimate(SliceStream& stream, const Message& message, std::size_t most)
        : m_In(&stream), m_Message(message), m_Most(most)
    {
    }

    /// Reads the message. Returns false for bytes that are none, or when the estimate is above `most`.
    bool read() { return addFields(*m_Message.GetDescriptor(), 0) && !isAbove(); }

    bool isAbove() const { return m_Memory > m_Most; }
    std::size_t memory() const { return m_Memory; }

private:
    bool addFields(const Descriptor& type, int depth)
    {
        while (!isAbove()) {
            const std::uint32_t tag = m_In.ReadTag();
            if (tag == 0)
                return m_In.ConsumedEntireMessage();
            const FieldDescriptor* const field =
                type.FindFieldByNumber(WireFormatLite::GetTagFieldNumber(tag));
            const bool added =
                WireFormatLite::GetTagWireType(tag) == WireFormatLite::WIRETYPE_LENGTH_DELIMITED
                    ? addDelimited(field, depth)
                    : addNumber(field, tag);
            if (!added)
                return false;
        }
        return true;
    }

    bool addNumber(const FieldDescriptor* field, std::uint32_t tag)
    {
        const WireFormatLite::WireType wireType = WireFormatLite::GetTagWireType(tag);
        if (field == nullptr || wireTypeOf(*field) != wireType || field->type() == FieldDescriptor::TYPE_ENUM)
            m_Memory += kUnknownField; // a number that the enumeration lacks is kept like an unknown field
        else if (field->is_repeated())
            m_Memory += kPlace;
        std::uint64_t value = 0;
        switch (wireType) {
        case WireFormatLite::WIRETYPE_VARINT:
            return m_In.ReadVarint64(&value);
        case WireFormatLite::WIRETYPE_FIXED32:
            return m_In.Skip(sizeof(std::uint32_t));
        case WireFormatLite::WIRETYPE_FIXED64:
            return m_In.Skip(sizeof(std::uint64_t));
        default:
            return false; // a group, which no message here has
        }
    }

    bool addDelimited(const FieldDescriptor* field, int depth)
    {
        int size = 0;
        if (!m_In.ReadVarintSizeAsInt(&size))
            return false;
        if (field != nullptr && field->type() == FieldDescriptor::TYPE_MESSAGE)
            return addMessage(*field, size, depth);
        const auto length = static_cast<std::size_t>(size);
        if (field != nullptr && field->is_packable()) {
            m_Memory += length * std::max(kPlace, kUnknownField); // as many numbers, packed
        } else {
            const bool known =
                field != nullptr && wireTypeOf(*field) == WireFormatLite::WIRETYPE_LENGTH_DELIMITED;
            m_Memory += !known ? kUnknownField : field->is_repeated() ? kPlace : 0;
            m_Memory += kText + (length > kTextInside ? length + kAllocation : 0);
        }
        return m_In.Skip(size);
    }

    static WireFormatLite::WireType wireTypeOf(const FieldDescriptor& field)
    {
        return WireFormatLite::WireTypeForFieldType(static_cast<WireFormatLite::FieldType>(field.type()));
    }

    bool addMessage(const FieldDescriptor& field, int size, int depth)
    {
        const std::size_t before = m_Memory;
        const Descriptor& type = *field.message_type();
        m_Memory += sizeOf(type) + kAllocation + kPlace;
        if (size > 0) {
            if (depth == kDeepest)
                return false;
            const CodedInputStream::Limit limit = m_In.PushLimit(size);
            if (!addFields(type, depth + 1))
                return false;
            m_In.PopLimit(limit);
        }
        if (depth == 0 && field.is_repeated())
            m_Memory = std::max(m_Memory, before + kLeastElement);
        return true;
    }

    std::size_t sizeOf(const Descriptor& type)
    {
        if (&type != m_LastType) {
            std::size_t& size = m_Sizes[&type];
            if (size == 0)
                size = m_Message.GetReflection()->GetMessageFactory()->GetPrototype(&type)->SpaceUsedLong();
            m_LastType = &type;
            m_LastSize = size;
        }
        return m_LastSize;
    }

    CodedInputStream m_In;
    const Message& m_Message;
    const std::size_t m_Most;
    std::size_t m_Memory = 0;
    std::unordered_map<const Descriptor*, std::size_t> m_Sizes;
    const Descriptor* m_LastType = nullptr;
    std::size_t m_LastSize = 0;
};

} // namespace

std::size_t mayArrive(std::size_t most)
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return most;
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const std::size_t used = pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t left = limit.rlim_cur > used ? limit.rlim_cur - used : 0;
    return std::clamp(left / kShareOfAddressSpace, kLeastArriving, most);
}

grpc::Status parseBounded(grpc::ByteBuffer& buffer, Message& message, std::size_t memory,
                          const std::function<bool(std::size_t)>& admit)
{
    std::vector<grpc::Slice> slices;
    if (!buffer.Valid() || !buffer.Dump(&slices).ok())
        return notParsed();
    const std::size_t size = buffer.Length();
    std::size_t estimated = size;
    buffer.Clear();
    if (size > kSmall) {
        SliceStream stream(slices, false);
        Estimate estimate(stream, message, memory);
        if (!estimate.read())
            return estimate.isAbove()
                       ? grpc::Status(grpc::StatusCode::RESOURCE_EXHAUSTED,
                                      "a message of " + std::to_string(size) +
                                          " bytes would take more than the " + std::to_string(memory) +
                                          " bytes of memory that it may take")
                       : notParsed();
        estimated = estimate.memory();
    }
    if (admit && !admit(estimated))
        return heldTooMuch();
    SliceStream stream(slices, true);
    return message.ParseFromZeroCopyStream(&stream) ? grpc::Status::OK : notParsed();
}

grpc::Status heldTooMuch()
{
    return {grpc::StatusCode::RESOURCE_EXHAUSTED,
            "the calls of this user hold too much memory; try again later"};
}

grpc::Status notParsed()
{
    return {grpc::StatusCode::INVALID_ARGUMENT, "the message can't be parsed"};
}

void BoundedAnswer::parse(grpc::ByteBuffer& buffer)
{
    try {
        m_Parsed = parseBounded(buffer, m_Message, kMostAnswerMemory);
    } catch (const std::bad_alloc&) { // which gRPC would not let through
        m_Parsed = {grpc::StatusCode::RESOURCE_EXHAUSTED, "there is no memory for the answer"};
    }
}

} // namespace wirecall
