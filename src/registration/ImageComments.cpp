#include "core/CallFrame.h"
#include "lumo/core/Identifier.h"
#include "lumo/core/LumoDataMgr.h"
#include "registration/CommentReading.h"

using ledgerserver::CommentImageUtilReq;
using ledgerserver::CommentImageUtilRsp;

namespace {

CommentImageUtilReq commentOf(const QString& content, const QString& state)
{
    CommentImageUtilReq request;
    request.set_commentcontent(content.toUtf8().constData());
    request.set_commentstate(state.toUtf8().constData());
    return request;
}

CommentImageUtilReq linkOf(ENUM_DATA_TYPE type, unsigned int recordID, unsigned int commentID)
{
    CommentImageUtilReq request;
    request.set_record_id(static_cast<int>(recordID));
    request.set_comment_id(static_cast<int>(commentID));
    request.set_data_type_id(type);
    return request;
}

} // namespace

// Image comments

ENUM_RET_TYPE CLumoDataMgr::getImageComment(unsigned int commentID, QString& content, QString& state)
{
    CallFrame frame(*this, "getImageComment");
    CommentImageUtilReq request;
    request.set_comment_id(static_cast<int>(commentID));
    return frame.ask(LUMO_LEDGER(queryCommentImageByCommID), request, verdicts::found,
                     commentreading::into(content, state));
}

ENUM_RET_TYPE CLumoDataMgr::getImageComment(QList<tagCommentInfo>& comments)
{
    CallFrame frame(*this, "getImageComment");
    return frame.ask(LUMO_LEDGER(queryCommentImage), CommentImageUtilReq(), verdicts::found,
                     [&](const CommentImageUtilRsp& response) {
                         commentreading::append(comments, response.commentimages(),
                                                &CLumoDataMgr::getCommentImageFromBean);
                     });
}

unsigned int CLumoDataMgr::getImageCommentID(const QString& content, const QString& state)
{
    CallFrame frame(*this, "getImageCommentID");
    unsigned int id = kNoIdentifier;
    frame.ask(LUMO_LEDGER(queryCommentImageByContentAndState), commentOf(content, state), verdicts::zero,
              readers::beanId(id));
    return id;
}

unsigned int CLumoDataMgr::addImageComment(const QString& content, const QString& state)
{
    CallFrame frame(*this, "addImageComment");
    unsigned int id = kNoIdentifier;
    frame.ask(LUMO_LEDGER(addCommentImage), commentOf(content, state), verdicts::zero, readers::id(id));
    return id;
}

bool CLumoDataMgr::linkImageComment(ENUM_DATA_TYPE type, unsigned int recordID, unsigned int commentID)
{
    CallFrame frame(*this, "linkImageComment");
    return frame.ask(LUMO_LEDGER(addEverImageByCommIDAndID), linkOf(type, recordID, commentID),
                     verdicts::zero, readers::nothing());
}

bool CLumoDataMgr::unlinkImageComment(ENUM_DATA_TYPE type, unsigned int recordID, unsigned int commentID)
{
    CallFrame frame(*this, "unlinkImageComment");
    return frame.ask(LUMO_LEDGER(deleteEverImageByCommIDAndID), linkOf(type, recordID, commentID),
                     verdicts::zero, readers::nothing());
}

void CLumoDataMgr::getCommentImageFromBean(const ledgerserver::CommentImageBean& bean, tagCommentInfo& info)
{
    commentreading::convert(bean, info);
}
