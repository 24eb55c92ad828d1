#ifndef LUMO_CENTRE_FORGESERVICE_H
#define LUMO_CENTRE_FORGESERVICE_H

#include "centre/ConnectionPool.h"
#include "forgeserver.pb.h"

namespace centre {

/// The data operations service.
class ForgeService : public forgeserver::ForgeServices
{
public:
    explicit ForgeService(ConnectionPool& pool) : m_Pool(pool) {}

    /// Passes when `serv_path` lies where the caller may read on some storage box. Nothing else of the
    /// request is looked at.
    void CheckTransfer(google::protobuf::RpcController* controller,
                       const forgeserver::CheckTransferReq* request, forgeserver::CheckTransferRsp* response,
                       google::protobuf::Closure* done) override;

    /// Writes a line to standard error and keeps nothing.
    void TransferProgress(google::protobuf::RpcController* controller,
                          const forgeserver::TransferProgressReq* request,
                          forgeserver::TransferProgressRsp* response,
                          google::protobuf::Closure* done) override;

private:
    bool mayRead(const std::string& token, const std::string& path);

    ConnectionPool& m_Pool;
};

} // namespace centre

#endif
