#include "centre/server/PlanningService.h"

#include "centre/database/Statement.h"
#include "centre/store/Ownership.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <iostream>

namespace centre {

namespace {

const Sql kCompany("SELECT companyno FROM company WHERE id = ?");

/// Selects the boxes that hold a disk that the caller's company may read, or a version.
const std::string kBoxes =
    "SELECT code, address FROM box WHERE (code IN (SELECT kesta_code FROM disk WHERE " + readableRow("disk") +
    ") OR code IN (SELECT kesta_code FROM version)) ";
const Sql kList(kBoxes + "ORDER BY code");
const Sql kBox(kBoxes + "AND code = :code");

Result listBoxes(Connection& connection, const User& user, const std::string& companyNo,
                 Tavrel::GetKestaListRsp& response)
{
    Statement& company = connection.statement(kCompany);
    const ResetAtEnd resetCompany(company);
    company.bindAll(user.companyId);
    if (!company.step() || company.string(0) != companyNo)
        return kNothingFound;
    Statement& boxes = connection.statement(kList);
    const ResetAtEnd resetBoxes(boxes);
    boxes.bindAll(user.companyId);
    while (boxes.step()) {
        Tavrel::KestaBox& box = *response.add_boxlist()->mutable_box();
        box.set_box_key(boxes.string(0));
        box.set_box_value(boxes.string(1));
    }
    return kDone;
}

Result findBox(Connection& connection, const User& user, const std::string& code,
               Tavrel::GetKestaInfoRsp& response)
{
    Statement& box = connection.statement(kBox);
    const ResetAtEnd resetAtEnd(box);
    box.bindAll(user.companyId, code);
    if (!box.step())
        return kNothingFound;
    response.mutable_info()->set_address(box.string(1));
    return kDone;
}

template <class Response>
void answer(ConnectionPool& pool, google::protobuf::RpcController& call,
            Result (*find)(Connection&, const User&, const std::string&, Response&),
            const std::string& wanted, Response& response, google::protobuf::Closure& done)
{
    try {
        ConnectionPool::Lease connection(pool);
        const Read read(*connection);
        const User user = connection->requireUser(static_cast<wirecall::ServerCall&>(call).token());
        response.mutable_status()->set_status_code(find(*connection, user, wanted, response));
    } catch (const std::exception& exception) {
        std::cerr << "lumo-centre: storage boxes: " + std::string(exception.what()) + "\n";
        response.Clear();
        response.mutable_status()->set_status_code(kError);
    }
    done.Run();
}

} // namespace

void PlanningService::getKestaList(google::protobuf::RpcController* call,
                                   const Tavrel::GetKestaListReq* request, Tavrel::GetKestaListRsp* response,
                                   google::protobuf::Closure* done)
{
    answer(m_Pool, *call, listBoxes, request->commoncode(), *response, *done);
}

void PlanningService::getKestaInfo(google::protobuf::RpcController* call,
                                   const Tavrel::CommonCodeSingleReq* request,
                                   Tavrel::GetKestaInfoRsp* response, google::protobuf::Closure* done)
{
    answer(m_Pool, *call, findBox, request->code(), *response, *done);
}

} // namespace centre
