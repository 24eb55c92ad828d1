#include "centre/box/BoxFaults.h"

#include "centre/endpoint/FaultyService.h"

#include <google/protobuf/stubs/callback.h>

#include <future>
#include <memory>

namespace centre {

namespace {

typedef std::shared_ptr<std::promise<void>> Promise;

// A callback of protobuf keeps its argument in the type of the parameter.
void keepPromise(Promise promise) // NOLINT(performance-unnecessary-value-param)
{
    promise->set_value();
}

/// Returns when the caller has gone or the server stops.
void waitForEnd(google::protobuf::RpcController* call)
{
    const Promise ended = std::make_shared<std::promise<void>>();
    call->NotifyOnCancel(google::protobuf::NewCallback(&keepPromise, ended));
    ended->get_future().wait();
}

void spoil(char* data, std::size_t size)
{
    data[size / 2] ^= 1;
}

} // namespace

void BoxFaults::passMessage(const std::string& operation, google::protobuf::RpcController* call)
{
    const std::optional<Fault> fault = m_Faults.fires(operation);
    if (!fault)
        return;
    if (fault->kind == Fault::Kind::Exit)
        exitAsIfKilled();
    if (fault->kind == Fault::Kind::Stall)
        waitForEnd(call);
    throw Broken{"refused by a fault switch"};
}

bool BoxFaults::isSpoiled(const std::string& operation, std::size_t size)
{
    const std::optional<Fault> fault = m_Faults.firesOnData(operation, size);
    if (fault && fault->kind == Fault::Kind::Break)
        throw Broken();
    return fault && size > 0;
}

void BoxFaults::send(const std::string& operation, char* data, std::size_t size)
{
    if (isSpoiled(operation, size))
        spoil(data, size);
}

bulkhaul::Pieces BoxFaults::arrived(const std::string& operation, const bulkhaul::Pieces& data,
                                    std::string& spoiled)
{
    if (!isSpoiled(operation, bulkhaul::sizeOf(data)))
        return data;
    for (const iovec& piece : data)
        spoiled.append(static_cast<const char*>(piece.iov_base), piece.iov_len);
    spoil(spoiled.data(), spoiled.size());
    return bulkhaul::piecesOf(spoiled);
}

} // namespace centre
