#include "components/bulkhaul/BoxClient.h"

#include <cstring>

namespace bulkhaul {

Code codeOf(haulbox::Status status)
{
    switch (status) {
    case haulbox::DONE:
    case haulbox::KEPT: // no failure, so not where one is expected
        return kNotUnderstood;
    case haulbox::NOT_FOUND:
        return kNotFound;
    case haulbox::REFUSED:
        return kRefused;
    case haulbox::CHANGED:
        return kSourceChanged;
    case haulbox::UNREADABLE:
        return kUnreadable;
    case haulbox::NOT_WRITABLE:
        return kNotWritable;
    case haulbox::NO_SPACE:
        return kNoSpace;
    case haulbox::CORRUPTED:
        return kCorrupted;
    case haulbox::UNSAFE_NAME:
        return kUnsafeName;
    case haulbox::WRONG_KIND:
        return kWrongKind;
    case haulbox::BUSY:
        return kBusy;
    case haulbox::FAILED:
    case haulbox::ENDED:
        return kBoxFailed;
    }
    return kNotUnderstood;
}

BoxClient::BoxClient(wirecall::RpcChannel& channel, const google::protobuf::Message* message,
                     long long stallLimit)
    : m_Channel(channel), m_StallLimit(stallLimit)
{
    if (message == nullptr)
        return;
    m_Carried.set_type_name(message->GetTypeName());
    m_Carried.set_body(message->SerializeAsString());
}

std::vector<Digest> BoxClient::digests(const haulbox::DigestsReq& request)
{
    haulbox::DigestsRsp response;
    askForSure(&haulbox::BoxServices_Stub::digests, request, response);
    const std::size_t size = request.chunks() * sizeof(Digest);
    if (response.digests().size() != size)
        throw TransferFailure(kNotUnderstood, "the box did not send as many digests as asked for");
    std::vector<Digest> digests(request.chunks());
    std::memcpy(digests.data(), response.digests().data(), size);
    return digests;
}

const google::protobuf::MethodDescriptor& BoxClient::method(const char* name)
{
    return *haulbox::BoxServices::descriptor()->FindMethodByName(name);
}

void BoxClient::fail(haulbox::Status status, const std::string& given)
{
    const std::string reason = given.empty() ? "the box gives no reason" : given;
    if (status == haulbox::ENDED)
        throw HandleEnded(codeOf(status), reason);
    throw TransferFailure(codeOf(status), reason);
}

void BoxClient::fail(const wirecall::RpcController& controller)
{
    const std::string text = controller.ErrorText();
    switch (controller.failure()) {
    case wirecall::Failure::NoConnection:
        throw TransferFailure(kNoConnection, "no connection to the box: " + text);
    case wirecall::Failure::TimeLimit:
        throw TransferFailure(kStalled, "nothing moved within the stall limit");
    case wirecall::Failure::Unauthenticated:
        throw TransferFailure(kRefused, text);
    case wirecall::Failure::NotImplemented:
        throw NotOffered(kNotUnderstood, "the other side is not a storage box: " + text);
    default:
        throw TransferFailure(kBoxFailed, "the box failed: " + text);
    }
}

Digest verified(const Pieces& data, const std::string& digest, const std::string& name)
{
    const Digest actual = digestOf(data);
    if (!isDigest(digest, actual))
        throw TransferFailure(kCorrupted, name + ": what arrived is not what was sent");
    return actual;
}

} // namespace bulkhaul
