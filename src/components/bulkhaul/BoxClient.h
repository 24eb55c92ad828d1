#ifndef LUMO_BULKHAUL_BOXCLIENT_H
#define LUMO_BULKHAUL_BOXCLIENT_H

#include "components/bulkhaul/files/Chunks.h"
#include "haulbox.pb.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace bulkhaul {

/// Why a transfer ended early.
class TransferFailure : public std::runtime_error
{
public:
    TransferFailure(Code code, const std::string& reason) : std::runtime_error(reason), m_Code(code) {}
    Code code() const { return m_Code; }

private:
    Code m_Code;
};

/// The box does not know the handle of a request any more.
class HandleEnded : public TransferFailure
{
public:
    using TransferFailure::TransferFailure;
};

/// The other side does not have the operation.
class NotOffered : public TransferFailure
{
public:
    using TransferFailure::TransferFailure;
};

/// The code of a failure; kNotUnderstood for a status that is none.
Code codeOf(haulbox::Status status);

/// Asks the storage box at the other end of a channel, for one transfer. Safe from several threads.
class BoxClient
{
public:
    /// `message` may be null. An answer that takes longer than `stallLimit` milliseconds is a failure.
    BoxClient(wirecall::RpcChannel& channel, const google::protobuf::Message* message, long long stallLimit);

    const haulbox::Carried& carried() const { return m_Carried; }
    wirecall::RpcChannel& channel() { return m_Channel; }
    long long stallLimit() const { return m_StallLimit; }
    /// Whether even the shortest call so far has taken so long that the way to the box must be long.
    bool isFar() const { return m_ShortestCall.load() >= kFar; }

    /// Returns the operation of a box that has this name.
    static const google::protobuf::MethodDescriptor& method(const char* name);

    /// Asks and waits. Throws TransferFailure when no answer comes. The caller judges the answer's status.
    template <class Request, class Response>
    void ask(void (haulbox::BoxServices_Stub::*operation)(google::protobuf::RpcController*, const Request*,
                                                          Response*, google::protobuf::Closure*),
             const Request& request, Response& response)
    {
        haulbox::BoxServices_Stub stub(&m_Channel);
        wirecall::RpcController controller;
        controller.SetStallLimit(m_StallLimit);
        const auto begin = Clock::now();
        (stub.*operation)(&controller, &request, &response, nullptr);
        if (controller.Failed())
            fail(controller);
        m_ShortestCall = std::min(m_ShortestCall.load(), Clock::now() - begin);
        requireStatus(response);
    }

    /// The same, and throws what `require` throws.
    template <class Request, class Response>
    void askForSure(void (haulbox::BoxServices_Stub::*operation)(google::protobuf::RpcController*,
                                                                 const Request*, Response*,
                                                                 google::protobuf::Closure*),
                    const Request& request, Response& response)
    {
        ask(operation, request, response);
        require(response);
    }

    /// Throws TransferFailure for any status but DONE, of the class HandleEnded for ENDED.
    template <class Response>
    static void require(const Response& response)
    {
        requireStatus(response);
        if (response.status() != haulbox::DONE)
            fail(response.status(), response.reason());
    }
    /// Throws the failure of a call.
    [[noreturn]] static void fail(const wirecall::RpcController& controller);

    /// Returns the digests that `request` asks for.
    std::vector<Digest> digests(const haulbox::DigestsReq& request);

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds kFar{10};

    template <class Response>
    static void requireStatus(const Response& response)
    {
        if (!response.has_status()) // or one that this client does not know
            throw TransferFailure(kNotUnderstood, "the box answered without a status");
    }
    [[noreturn]] static void fail(haulbox::Status status, const std::string& reason);

    wirecall::RpcChannel& m_Channel;
    haulbox::Carried m_Carried;
    const long long m_StallLimit;
    std::atomic<Clock::duration> m_ShortestCall{Clock::duration::max()};
};

/// Returns the digest of `data`. Throws TransferFailure (kCorrupted) unless it equals `digest`, which came
/// with the data.
Digest verified(const Pieces& data, const std::string& digest, const std::string& name);

} // namespace bulkhaul

#endif
