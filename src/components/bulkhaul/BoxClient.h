#ifndef LUMO_BULKHAUL_BOXCLIENT_H
#define LUMO_BULKHAUL_BOXCLIENT_H

#include "components/bulkhaul/Chunks.h"
#include "haulbox.pb.h"
#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"

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

/// The code of a failure; kNotUnderstood for a status that is none.
Code codeOf(haulbox::Status status);

/// Asks the storage box at the other end of a channel, for one transfer. Safe from several threads.
class BoxClient
{
public:
    /// `message` may be null. An answer that takes longer than `stallLimit` milliseconds is a failure.
    BoxClient(wirecall::RpcChannel& channel, const google::protobuf::Message* message, long long stallLimit);

    const haulbox::Carried& carried() const { return m_Carried; }

    /// Asks and waits. Throws TransferFailure when no answer comes. The caller judges the answer's status.
    template <class Request, class Response>
    void ask(void (haulbox::BoxServices_Stub::*operation)(google::protobuf::RpcController*, const Request*,
                                                          Response*, google::protobuf::Closure*),
             const Request& request, Response& response)
    {
        haulbox::BoxServices_Stub stub(&m_Channel);
        wirecall::RpcController controller;
        controller.SetTimeout(m_StallLimit);
        (stub.*operation)(&controller, &request, &response, nullptr);
        if (controller.Failed())
            fail(controller);
        if (!response.has_status()) // or one that this client does not know
            throw TransferFailure(kNotUnderstood, "the box answered without a status");
    }

    /// The same, and throws TransferFailure for any status but DONE.
    template <class Request, class Response>
    void askForSure(void (haulbox::BoxServices_Stub::*operation)(google::protobuf::RpcController*,
                                                                 const Request*, Response*,
                                                                 google::protobuf::Closure*),
                    const Request& request, Response& response)
    {
        ask(operation, request, response);
        require(response);
    }

    template <class Response>
    static void require(const Response& response)
    {
        if (response.status() != haulbox::DONE)
            throw TransferFailure(codeOf(response.status()),
                                  response.reason().empty() ? "the box gives no reason" : response.reason());
    }

    /// Returns the digests that `request` asks for.
    std::vector<Digest> digests(const haulbox::DigestsReq& request);

private:
    [[noreturn]] static void fail(const wirecall::RpcController& controller);

    wirecall::RpcChannel& m_Channel;
    haulbox::Carried m_Carried;
    const long long m_StallLimit;
};

/// Returns the digest of `data`. Throws TransferFailure (kCorrupted) unless it equals `digest`, which came
/// with the data.
Digest verified(const std::string& data, const std::string& digest, const std::string& name);

} // namespace bulkhaul

#endif
