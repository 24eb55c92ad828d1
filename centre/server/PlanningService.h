#ifndef LUMO_CENTRE_SERVER_PLANNINGSERVICE_H
#define LUMO_CENTRE_SERVER_PLANNINGSERVICE_H

#include "centre/store/ConnectionPool.h"
#include "tavrel.pb.h"

namespace centre {

/// Tells where storage boxes are. In `status_code` stand the results of the catalogue service.
class PlanningService : public Tavrel::TavrelServer
{
public:
    explicit PlanningService(ConnectionPool& pool) : m_Pool(pool) {}

    /// The boxes of a company, codes and addresses: those that hold a disk of the company or a version.
    void getKestaList(google::protobuf::RpcController* controller, const Tavrel::GetKestaListReq* request,
                      Tavrel::GetKestaListRsp* response, google::protobuf::Closure* done) override;

    void getKestaInfo(google::protobuf::RpcController* controller, const Tavrel::CommonCodeSingleReq* request,
                      Tavrel::GetKestaInfoRsp* response, google::protobuf::Closure* done) override;

private:
    ConnectionPool& m_Pool;
};

} // namespace centre

#endif
