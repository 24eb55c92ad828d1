#include "core/CallFrame.h"
#include "forgeserver.pb.h"
#include "lumo/core/LumoDataMgr.h"

#include <QtEndian>

#include <algorithm>
#include <limits>
#include <stdexcept>

using forgeserver::CheckTransferReq;
using forgeserver::CheckTransferRsp;
using forgeserver::TransferProgressReq;

// Transfer control, for a host with a channel of its own

bool CLumoDataMgr::CheckTransfer(const boost::shared_ptr<wirecall::RpcChannel>& channel,
                                 const QString& taskID, const QString& servPath, int valueA, int valueB,
                                 const QStringList& filePaths, const QStringList& dirPaths,
                                 const QVector<char>& transMsg)
{
    CallFrame frame(*this, "CheckTransfer", "CheckTransfer!", channel.get(), m_Timeout * 100);
    CheckTransferReq request;
    request.set_task_id(taskID.toStdString());
    request.set_serv_path(servPath.toStdString());
    request.set_check_a(valueA);
    request.set_check_b(valueB);
    for (const QString& path : dirPaths)
        request.add_dir_path(path.toStdString());
    for (const QString& path : filePaths)
        request.add_file_path(path.toStdString());
    if (!transMsg.isEmpty())
        request.set_trans_msg(transMsg.constData(), static_cast<std::size_t>(transMsg.size()));
    bool passed = false;
    frame.ask(LUMO_FORGE(CheckTransfer), request, verdicts::any,
              [&](const CheckTransferRsp& response) { passed = response.passed(); });
    return passed;
}

void CLumoDataMgr::TransferProgress(const boost::shared_ptr<wirecall::RpcChannel>& channel,
                                    const QString& taskID, int valueA, int valueB, int valueC)
{
    CallFrame frame(*this, "TransferProgress", "TransferProgress!", channel.get(), m_Timeout);
    TransferProgressReq request;
    request.set_task_id(taskID.toStdString());
    request.set_progress_a(valueA);
    request.set_progress_b(valueB);
    request.set_progress_c(valueC);
    frame.ask(LUMO_FORGE(TransferProgress), request, verdicts::any, readers::nothing());
}

bool CLumoDataMgr::PackProtobufMessage(const google::protobuf::Message* message, QVector<char>& packed)
{
    const std::string typeName = message->GetTypeName();
    constexpr std::size_t lengthSize = sizeof(quint32);
    if (2 * lengthSize + typeName.size() + message->ByteSizeLong() > std::numeric_limits<int>::max())
        throw std::length_error("PackProtobufMessage: " + typeName + " is too long");
    const std::string body = message->SerializeAsString();
    const std::size_t following = lengthSize + typeName.size() + body.size();
    packed.resize(static_cast<int>(lengthSize + following));
    char* const place = packed.data();
    qToBigEndian(static_cast<quint32>(following), place);
    qToBigEndian(static_cast<quint32>(typeName.size()), place + lengthSize);
    std::copy(body.begin(), body.end(), std::copy(typeName.begin(), typeName.end(), place + 2 * lengthSize));
    return true;
}
