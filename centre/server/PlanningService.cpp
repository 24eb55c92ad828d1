#include "centre/server/PlanningService.h"

#include "centre/store/ResetAtEnd.h"

#include <iostream>

namespace centre {

namespace {

constexpr char kCompany[] = "SELECT id FROM company WHERE companyno = ?";
constexpr char kBoxes[] = "SELECT code, address FROM box"
                          " WHERE code IN (SELECT kesta_code FROM disk WHERE company_id = ?)"
                          " OR code IN (SELECT kesta_code FROM version) ORDER BY code";
constexpr char kAddress[] = "SELECT address FROM box WHERE code = ?";

Result listBoxes(Connection& connection, const std::string& companyNo, Tavrel::GetKestaListRsp& response)
{
    SQLite::Statement& company = connection.statement(kCompany);
    const ResetAtEnd resetCompany(company);
    SQLite::bind(company, companyNo);
    if (!company.executeStep())
        return kNothingFound;
    SQLite::Statement& boxes = connection.statement(kBoxes);
    const ResetAtEnd resetBoxes(boxes);
    SQLite::bind(boxes, company.getColumn(0).getUInt());
    while (boxes.executeStep()) {
        Tavrel::KestaBox& box = *response.add_boxlist()->mutable_box();
        box.set_box_key(boxes.getColumn(0).getString());
        box.set_box_value(boxes.getColumn(1).getString());
    }
    return kDone;
}

Result findBox(Connection& connection, const std::string& code, Tavrel::GetKestaInfoRsp& response)
{
    SQLite::Statement& address = connection.statement(kAddress);
    const ResetAtEnd resetAtEnd(address);
    SQLite::bind(address, code);
    if (!address.executeStep())
        return kNothingFound;
    response.mutable_info()->set_address(address.getColumn(0).getString());
    return kDone;
}

template <class Response>
void answer(ConnectionPool& pool, Result (*find)(Connection&, const std::string&, Response&),
            const std::string& wanted, Response& response, google::protobuf::Closure& done)
{
    try {
        ConnectionPool::Lease connection(pool);
        response.mutable_status()->set_status_code(find(*connection, wanted, response));
    } catch (const std::exception& exception) {
        std::cerr << "lumo-centre: storage boxes: " + std::string(exception.what()) + "\n";
        response.Clear();
        response.mutable_status()->set_status_code(kError);
    }
    done.Run();
}

} // namespace

void PlanningService::getKestaList(google::protobuf::RpcController*, const Tavrel::GetKestaListReq* request,
                                   Tavrel::GetKestaListRsp* response, google::protobuf::Closure* done)
{
    answer(m_Pool, listBoxes, request->commoncode(), *response, *done);
}

void PlanningService::getKestaInfo(google::protobuf::RpcController*,
                                   const Tavrel::CommonCodeSingleReq* request,
                                   Tavrel::GetKestaInfoRsp* response, google::protobuf::Closure* done)
{
    answer(m_Pool, findBox, request->code(), *response, *done);
}

} // namespace centre
