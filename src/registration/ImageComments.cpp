#include "core/CallFrame.h"
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
    return frame.judged(LEDGER(queryCommentImageByCommID), request, commentreading::into(content, state));
}

ENUM_RET_TYPE CLumoDataMgr::getImageComment(QList<tagCommentInfo>& comments)
{
    CallFrame frame(*this, "getImageComment");
    return frame.judged(LEDGER(queryCommentImage), CommentImageUtilReq(),
                        [&](const CommentImageUtilRsp& response) {
                            commentreading::append(comments, response.commentimages(),
                                                   &CLumoDataMgr::getCommentImageFromBean);
                        });
}

unsigned int CLumoDataMgr::getImageCommentID(const QString& content, const QString& state)
{
    return CallFrame(*this, "getImageCommentID")
        .identifier(LEDGER(queryCommentImageByContentAndState), commentOf(content, state));
}

unsigned int CLumoDataMgr::addImageComment(const QString& content, const QString& state)
{
    return CallFrame(*this, "addImageComment")
        .ownIdentifier(LEDGER(addCommentImage), commentOf(content, state));
}

bool CLumoDataMgr::linkImageComment(ENUM_DATA_TYPE type, unsigned int recordID, unsigned int commentID)
{
    return CallFrame(*this, "linkImageComment")
        .accepted(LEDGER(addEverImageByCommIDAndID), linkOf(type, recordID, commentID));
}

bool CLumoDataMgr::unlinkImageComment(ENUM_DATA_TYPE type, unsigned int recordID, unsigned int commentID)
{
    return CallFrame(*this, "unlinkImageComment")
        .accepted(LEDGER(deleteEverImageByCommIDAndID), linkOf(type, recordID, commentID));
}

void CLumoDataMgr::getCommentImageFromBean(const ledgerserver::CommentImageBean& bean, tagCommentInfo& info)
{
    commentreading::convert(bean, info);
}
