#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "centre/database/Statement.h"
#include "centre/ledger/Changes.h"
#include "centre/store/Ownership.h"
#include "ledgerserver.pb.h"
#include "lumo/components/platform/Utf8.h"

namespace centre {

namespace {

using namespace ledgerserver;

const Sql kAddComment("INSERT INTO comment(company_id, commentcontent, commentstate)"
                      " VALUES (?, ?, ?) ON CONFLICT DO NOTHING");
const Sql
    kFindComment("SELECT id FROM comment WHERE company_id = ? AND commentcontent = ? AND commentstate = ?");
const Sql kCommentOfCompany("SELECT 1 FROM comment WHERE id = ? AND company_id = ?");
const Sql
    kSetComment("INSERT INTO comment_record(comment_id, data_type_id, record_id) VALUES (?, ?, ?)"
                " ON CONFLICT (data_type_id, record_id) DO UPDATE SET comment_id = excluded.comment_id");

const Sql kAddImageComment("INSERT INTO image_comment(company_id, commentcontent, commentstate)"
                           " VALUES (?, ?, ?) ON CONFLICT DO NOTHING");
const Sql kFindImageComment("SELECT id FROM image_comment WHERE commentcontent = :content"
                            " AND commentstate = :state AND " +
                            readableImageComment() + "ORDER BY id");
const Sql kImageComment("SELECT 1 FROM image_comment WHERE id = :id AND " + readableImageComment());
const Sql kAddMark("INSERT INTO image_mark(comm_id, data_type_id, record_id) VALUES (?, ?, ?)"
                   " ON CONFLICT DO NOTHING");
const Sql kRemoveMark("DELETE FROM image_mark WHERE comm_id = ? AND data_type_id = ? AND record_id = ?");

/// Runs a statement and returns how many rows it changed.
template <class... Values>
int change(const Caller& caller, const Sql& sql, const Values&... values)
{
    Statement& statement = caller.connection.statement(sql);
    const ResetAtEnd resetAtEnd(statement);
    statement.bindAll(values...);
    return statement.run();
}

/// Returns the first column of the first row.
template <class... Values>
std::optional<std::uint32_t> find(const Caller& caller, const Sql& sql, const Values&... values)
{
    Statement& statement = caller.connection.statement(sql);
    const ResetAtEnd resetAtEnd(statement);
    statement.bindAll(values...);
    if (!statement.step())
        return std::nullopt;
    return statement.id(0);
}

/// Returns the identifier of what exists or, without it, is added. Tries to add only what does not exist:
/// also an insertion that meets a conflict takes an identifier on some engines.
template <class... Values>
std::uint32_t findOrAdd(const Caller& caller, const Sql& findSql, const Sql& addSql, const Values&... values)
{
    if (const auto id = find(caller, findSql, values...))
        return *id;
    change(caller, addSql, values...);
    return find(caller, findSql, values...).value();
}

/// Throws unless the texts can be a comment: its content must not be empty, its state may be.
void requireTexts(const std::string& content, const std::string& state)
{
    if (content.empty())
        throw refusal("a comment must have a content");
    for (const std::string& text : {content, state}) {
        requireShort(text, "a comment");
        if (!platform::isUtf8(text) || text.find('\0') != std::string::npos)
            throw refusal("a comment must be UTF-8 without the character 0, not " + abbreviated(text));
    }
}

void requireComment(const Caller& caller, std::uint32_t id)
{
    if (!find(caller, kCommentOfCompany, id, caller.user.companyId))
        throw refusal("the company of user " + caller.user.name + " has no comment " + std::to_string(id));
}

void setComment(const Caller& caller, std::uint32_t comment, int kind, std::uint32_t record)
{
    requireOwn(caller.connection, caller.user, kind, record);
    change(caller, kSetComment, comment, kind, record);
}

Result addComment(const Caller& caller, const DataUtilBeanReq& request, DataUtilBeanRsp& response)
{
    const auto company = static_cast<std::uint32_t>(request.company_id());
    if (company != caller.user.companyId)
        throw refusal("company " + std::to_string(company) + " is not the company of user " +
                      caller.user.name);
    requireTexts(request.commentcontent(), request.commentstate());
    response.set_id(findOrAdd(caller, kFindComment, kAddComment, company, request.commentcontent(),
                              request.commentstate()));
    return kDone;
}

Result setCommentOfRecord(const Caller& caller, const DataUtilBeanReq& request, DataUtilBeanRsp&)
{
    requireComment(caller, request.comment_id());
    setComment(caller, request.comment_id(), request.data_type_id(),
               static_cast<std::uint32_t>(request.record_id()));
    return kDone;
}

Result setCommentOfRecords(const Caller& caller, const DataUtilBeanReq& request, DataUtilBeanRsp&)
{
    requireComment(caller, request.comment_id());
    for (const std::uint32_t record : request.list_id())
        setComment(caller, request.comment_id(), request.data_type_id(), record);
    return kDone;
}

Result addImageComment(const Caller& caller, const CommentImageUtilReq& request,
                       CommentImageUtilRsp& response)
{
    requireTexts(request.commentcontent(), request.commentstate());
    const auto known = [&] {
        return find(caller, kFindImageComment, request.commentcontent(), request.commentstate(),
                    caller.user.companyId);
    };
    if (!known())
        change(caller, kAddImageComment, caller.user.companyId, request.commentcontent(),
               request.commentstate());
    response.set_id(known().value());
    return kDone;
}

int changeMark(const Caller& caller, const Sql& sql, const CommentImageUtilReq& request)
{
    const auto comment = static_cast<std::uint32_t>(request.comment_id());
    const auto record = static_cast<std::uint32_t>(request.record_id());
    if (!find(caller, kImageComment, comment, caller.user.companyId))
        throw refusal("there is no image comment " + std::to_string(comment));
    requireOwn(caller.connection, caller.user, request.data_type_id(), record);
    return change(caller, sql, comment, request.data_type_id(), record);
}

Result addMark(const Caller& caller, const CommentImageUtilReq& request, CommentImageUtilRsp&)
{
    changeMark(caller, kAddMark, request);
    return kDone;
}

Result removeMark(const Caller& caller, const CommentImageUtilReq& request, CommentImageUtilRsp&)
{
    return changeMark(caller, kRemoveMark, request) > 0 ? kDone : kNothingFound;
}

} // namespace

std::vector<Change> commentChanges()
{
    return {
        makeChange("addCommentInfo", addComment),
        makeChange("addOrUpdateCommentInfoByType", setCommentOfRecord),
        makeChange("linkCommentInfoToRecord", setCommentOfRecords),
        makeChange("addCommentImage", addImageComment),
        makeChange("addEverImageByCommIDAndID", addMark),
        makeChange("deleteEverImageByCommIDAndID", removeMark),
    };
}

} // namespace centre
