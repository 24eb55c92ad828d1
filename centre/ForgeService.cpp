#include "centre/ForgeService.h"

#include "centre/BoxPath.h"
#include "centre/Text.h"
#include "components/wirecall/RpcServer.h"

#include <iostream>
#include <sstream>

namespace centre {

namespace {

constexpr std::size_t kShownOfTaskId = 200; // it may be megabytes

} // namespace

void ForgeService::CheckTransfer(google::protobuf::RpcController* controller,
                                 const forgeserver::CheckTransferReq* request,
                                 forgeserver::CheckTransferRsp* response, google::protobuf::Closure* done)
{
    const std::string token = static_cast<wirecall::ServerCall*>(controller)->token();
    response->set_passed(mayRead(token, request->serv_path()));
    done->Run();
}

void ForgeService::TransferProgress(google::protobuf::RpcController*,
                                    const forgeserver::TransferProgressReq* request,
                                    forgeserver::TransferProgressRsp*, google::protobuf::Closure* done)
{
    std::ostringstream line;
    line << "lumo-centre: transfer " << escaped(request->task_id().substr(0, kShownOfTaskId)) << ": "
         << request->progress_a() << " " << request->progress_b() << " " << request->progress_c() << "\n";
    std::cerr << line.str();
    done->Run();
}

bool ForgeService::mayRead(const std::string& token, const std::string& path)
{
    if (!isBoxPath(path))
        return false;
    ConnectionPool::Lease connection(m_Pool);
    const std::optional<User> user = connection->user(token);
    return user && !overlap(m_Pool.dataFolder(), path) && findGround(*connection, user->companyId, "", path);
}

} // namespace centre
