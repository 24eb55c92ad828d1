#include "lumo/client/Comments.h"

#include "client/Link.h"
#include "client/RecordKinds.h"
#include "client/RecordText.h"
#include "client/TextList.h"
#include "lumo/client/Images.h"
#include "lumo/core/LumoDataMgr.h"

namespace lumo {

using internal::Call;
using internal::notFound;

namespace {

/// The operations that both tables have.
struct Operations
{
    const char* word;
    ENUM_RET_TYPE (CLumoDataMgr::*list)(QList<tagCommentInfo>&);
    ENUM_RET_TYPE (CLumoDataMgr::*get)(unsigned int, QString&, QString&);
    unsigned int (CLumoDataMgr::*find)(const QString&, const QString&);
    unsigned int (CLumoDataMgr::*add)(const QString&, const QString&);
};

const Operations& operationsOf(Comments::Table table)
{
    using Manager = CLumoDataMgr;
    static constexpr Operations kComments = {"comment", &Manager::getCommentInfo, &Manager::getCommentInfo,
                                             &Manager::getCommentID, &Manager::addCommentInfo};
    static constexpr Operations kMarks = {"mark", &Manager::getImageComment, &Manager::getImageComment,
                                          &Manager::getImageCommentID, &Manager::addImageComment};
    return table == Comments::Table::Comments ? kComments : kMarks;
}

Comments::Comment commentOf(const Call& call, const Operations& operations, CommentId id)
{
    QString content;
    QString state;
    if (!call.answered((call.manager().*operations.get)(id.number(), content, state)))
        notFound(std::string("the centre knows no ") + operations.word + " " + std::to_string(id.number()));
    return {id, content.toStdString(), state.toStdString()};
}

void requireTable(bool right, const char* message)
{
    if (!right)
        internal::refuse(message);
}

void requireMarkable(Record::Kind kind)
{
    if (!Images::canBeMarked(kind))
        internal::refuse(std::string("a ") + internal::kindOf(kind).name + " can't have a mark");
}

} // namespace

Comments::Comments(std::shared_ptr<internal::Link> link, Table table)
    : m_Link(std::move(link)), m_Table(table)
{
}

std::vector<Comments::Comment> Comments::all() const
{
    const Call call(*m_Link);
    const Operations& operations = operationsOf(m_Table);
    QList<tagCommentInfo> records;
    call.answered((call.manager().*operations.list)(records));
    std::vector<Comment> comments;
    const tagCommentInfo* previous = nullptr;
    for (const tagCommentInfo& record : qAsConst(records)) {
        // A text that doesn't fit the record is asked for again, by its identifier.
        const bool leftOver =
            internal::maybeLeftOver(record.content, previous ? previous->content : nullptr) ||
            internal::maybeLeftOver(record.state, previous ? previous->state : nullptr);
        comments.push_back(leftOver ? commentOf(call, operations, CommentId(record.id))
                                    : Comment{CommentId(record.id), convertToUtf8(record.content),
                                              convertToUtf8(record.state)});
        previous = &record;
    }
    return comments;
}

Comments::Comment Comments::get(CommentId id) const
{
    return commentOf(Call(*m_Link), operationsOf(m_Table), id);
}

CommentId Comments::find(const std::string& content, const std::string& state) const
{
    const Call call(*m_Link);
    const Operations& operations = operationsOf(m_Table);
    const CommentId id(
        (call.manager().*operations.find)(QString::fromStdString(content), QString::fromStdString(state)));
    // The library returns the same for an error of the centre and an unknown comment.
    if (!id.isSet() && Call::refused())
        notFound(std::string("there is no such ") + operations.word);
    call.require(id.isSet());
    return id;
}

CommentId Comments::add(const std::string& content, const std::string& state) const
{
    requireTable(!content.empty(), "the content is empty; only the state may be");
    const Call call(*m_Link);
    const CommentId id((call.manager().*operationsOf(m_Table).add)(QString::fromStdString(content),
                                                                   QString::fromStdString(state)));
    call.require(id.isSet());
    return id;
}

void Comments::link(Record::Kind kind, const std::vector<RecordId>& records, CommentId comment) const
{
    const ENUM_DATA_TYPE number = internal::kindOf(kind).number;
    const Call call(*m_Link);
    if (m_Table == Table::Marks) {
        requireMarkable(kind);
        for (const RecordId record : records)
            call.require(call->linkImageComment(number, record.number(), comment.number()));
        return;
    }
    QList<unsigned int> numbers;
    for (const RecordId record : records)
        numbers.append(record.number());
    call.require(numbers.size() == 1
                     ? call->linkCommentInfoToRecord(number, numbers.front(), comment.number())
                     : call->linkCommentInfoToRecord(number, numbers, comment.number()));
}

void Comments::unlink(Record::Kind kind, RecordId record, CommentId mark) const
{
    requireTable(m_Table == Table::Marks, "a comment can't be taken away from a record");
    requireMarkable(kind);
    const Call call(*m_Link);
    const bool done = call->unlinkImageComment(internal::kindOf(kind).number, record.number(), mark.number());
    // The library returns the same for an error of the centre and a mark that is not there.
    if (!done && Call::refused()) {
        notFound(std::string(internal::kindOf(kind).name) + " " + std::to_string(record.number()) +
                 " does not have mark " + std::to_string(mark.number()));
    }
    call.require(done);
}

std::vector<std::string> Comments::contents() const
{
    requireTable(m_Table == Table::Comments, "there is no list of the contents of marks");
    const Call call(*m_Link);
    QStringList texts;
    call.answered(call->getCommentContent(texts));
    return internal::textsOf(texts);
}

std::vector<std::string> Comments::states(const std::string& content) const
{
    requireTable(m_Table == Table::Comments, "there is no list of the states of marks");
    const Call call(*m_Link);
    QStringList texts;
    call.answered(call->getCommentState(QString::fromStdString(content), texts));
    return internal::textsOf(texts);
}

} // namespace lumo
