#ifndef LUMO_CENTRE_SERVER_PLANNINGSERVICE_H
#define LUMO_CENTRE_SERVER_PLANNINGSERVICE_H

#include "centre/store/ConnectionPool.h"
#include "tavrel.pb.h"

namespace centre {

/// Answers with the addresses of storage boxes. `status_code` has the values of Result.
class PlanningService : public Tavrel::TavrelServer
{
public:
    explicit PlanningService(ConnectionPool& pool) : m_Pool(pool) {}

    /// Lists the codes and addresses of the boxes that hold a disk that the caller may read, or a version.
    /// The company must be the caller's.
    void getKestaList(google::protobuf::RpcController* controller, const Tavrel::GetKestaListReq* request,
                      Tavrel::GetKestaListRsp* response, google::protobuf::Closure* done) override;

    /// Finds one of these boxes.
    void getKestaInfo(google::protobuf::RpcController* controller, const Tavrel::CommonCodeSingleReq* request,
                      Tavrel::GetKestaInfoRsp* response, google::protobuf::Closure* done) override;

private:
    ConnectionPool& m_Pool;
};

} // namespace centre

#endif
