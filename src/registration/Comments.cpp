#include "core/CallFrame.h"
#include "core/Readers.h"
#include "lumo/core/Identifier.h"
#include "lumo/core/LumoDataMgr.h"
#include "registration/CommentReading.h"

using ledgerserver::CommentUtilBeanRsp;
using ledgerserver::DataUtilBeanReq;
using ledgerserver::DataUtilBeanRsp;

namespace {

DataUtilBeanReq commentOfCompany(unsigned int companyID, const QString& content, const QString& state)
{
    DataUtilBeanReq request;
    request.set_company_id(static_cast<int>(companyID));
    request.set_commentcontent(content.toUtf8().constData());
    request.set_commentstate(state.toUtf8().constData());
    return request;
}

} // namespace

// Comments

ENUM_RET_TYPE CLumoDataMgr::getCommentInfo(unsigned int commentID, QString& content, QString& state)
{
    CallFrame frame(*this, "getCommentInfo");
    DataUtilBeanReq request;
    request.set_record_id(static_cast<int>(commentID));
    return frame.ask(LUMO_LEDGER(queryCommentInfoByID), request, verdicts::found,
                     commentreading::into(content, state));
}

ENUM_RET_TYPE CLumoDataMgr::getCommentInfo(QList<tagCommentInfo>& comments)
{
    CallFrame frame(*this, "getCommentInfo");
    DataUtilBeanReq request;
    request.set_company_id(static_cast<int>(m_CompanyID));
    return frame.ask(
        LUMO_LEDGER(queryCommentInfo), request, verdicts::found, [&](const CommentUtilBeanRsp& response) {
            commentreading::append(comments, response.commentinfos(), &CLumoDataMgr::getCommentInfoFromBean);
        });
}

ENUM_RET_TYPE CLumoDataMgr::getCommentContent(QStringList& contents)
{
    CallFrame frame(*this, "getCommentContent");
    DataUtilBeanReq request;
    request.set_company_id(static_cast<int>(m_CompanyID));
    return frame.ask(
        LUMO_LEDGER(queryCommentContents), request, verdicts::found,
        [&](const DataUtilBeanRsp& response) { readers::appendTexts(contents, response.commentcontents()); });
}

ENUM_RET_TYPE CLumoDataMgr::getCommentState(const QString& content, QStringList& states)
{
    CallFrame frame(*this, "getCommentState");
    DataUtilBeanReq request;
    request.set_commentcontent(content.toUtf8().constData());
    return frame.ask(
        LUMO_LEDGER(queryCommentStateByCommentContent), request, verdicts::found,
        [&](const DataUtilBeanRsp& response) { readers::appendTexts(states, response.commentstates()); });
}

unsigned int CLumoDataMgr::getCommentID(const QString& content, const QString& state)
{
    CallFrame frame(*this, "getCommentID");
    unsigned int id = kNoIdentifier;
    frame.ask(LUMO_LEDGER(queryCommentID), commentOfCompany(m_CompanyID, content, state), verdicts::zero,
              readers::id(id));
    return id;
}

unsigned int CLumoDataMgr::addCommentInfo(const QString& content, const QString& state)
{
    CallFrame frame(*this, "addCommentInfo");
    unsigned int id = kNoIdentifier;
    frame.ask(LUMO_LEDGER(addCommentInfo), commentOfCompany(m_CompanyID, content, state), verdicts::zero,
              readers::id(id));
    return id;
}

bool CLumoDataMgr::linkCommentInfoToRecord(ENUM_DATA_TYPE type, unsigned int recordID, unsigned int commentID)
{
    CallFrame frame(*this, "linkCommentInfoToRecord");
    DataUtilBeanReq request;
    request.set_data_type_id(type);
    request.set_record_id(static_cast<int>(recordID));
    request.set_comment_id(commentID);
    return frame.ask(LUMO_LEDGER(addOrUpdateCommentInfoByType), request, verdicts::zeroTersely,
                     readers::nothing());
}

bool CLumoDataMgr::linkCommentInfoToRecord(ENUM_DATA_TYPE type, const QList<unsigned int>& recordIDs,
                                           unsigned int commentID)
{
    CallFrame frame(*this, "linkCommentInfoToRecord");
    if (recordIDs.isEmpty()) {
        frame.write("listID of linkCommentInfoToRecord isEmpty");
        return frame.leave(true);
    }
    DataUtilBeanReq request;
    request.set_data_type_id(type);
    request.set_comment_id(commentID);
    for (const unsigned int recordID : recordIDs)
        request.add_list_id(recordID);
    return frame.ask(LUMO_LEDGER(linkCommentInfoToRecord), request, verdicts::zeroTersely,
                     readers::nothing());
}

unsigned int CLumoDataMgr::linkCommentInfoToRecord(ENUM_DATA_TYPE type, unsigned int recordID,
                                                   const QString& content, const QString& state)
{
    CallFrame frame(*this, "linkCommentInfoToRecord");
    const unsigned int commentID = addCommentInfo(content, state);
    linkCommentInfoToRecord(type, recordID, commentID); // also when either fails
    return frame.leave(commentID);
}

void CLumoDataMgr::getCommentInfoFromBean(const ledgerserver::CommentInfoBean& bean, tagCommentInfo& info)
{
    commentreading::convert(bean, info);
}
