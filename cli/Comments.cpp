#include "cli/Commands.h"

#include "cli/Connection.h"
#include "cli/DisplayText.h"
#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"
#include "cli/Records.h"

#include "lumo/core/LumoDataMgr.h"
#include "lumo/core/TextEncoding.h"

#include <cstring>

namespace cli {

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

const Operations& operationsOf(CommentTable table)
{
    using Manager = CLumoDataMgr;
    static const Operations kComments = {"comment", &Manager::getCommentInfo, &Manager::getCommentInfo,
                                         &Manager::getCommentID, &Manager::addCommentInfo};
    static const Operations kMarks = {"mark", &Manager::getImageComment, &Manager::getImageComment,
                                      &Manager::getImageCommentID, &Manager::addImageComment};
    return table == CommentTable::Comments ? kComments : kMarks;
}

struct Comment
{
    unsigned int id = kNone;
    std::string content;
    std::string state;
};

Json jsonOf(const Comment& comment)
{
    return {{"id", comment.id}, {"content", comment.content}, {"state", comment.state}};
}

Comment commentOf(const Session& session, const Operations& operations, unsigned int id)
{
    QString content;
    QString state;
    if (!answered(session, (session.manager.*operations.get)(id, content, state))) {
        throw Failure(ExitCode::PlaceNotFound,
                      std::string("the centre knows no ") + operations.word + " " + std::to_string(id));
    }
    return {id, content.toStdString(), state.toStdString()};
}

/// A text that doesn't fit the record of a list leaves there what stood before, so that whatever could be
/// such a rest is asked for again.
bool maybeLeftOver(const char* text, const char* previous)
{
    return *text == '\0' || (previous != nullptr && std::strcmp(text, previous) == 0);
}

std::vector<Comment> commentsOf(const Session& session, const Operations& operations)
{
    QList<tagCommentInfo> records;
    answered(session, (session.manager.*operations.list)(records));
    std::vector<Comment> comments;
    const tagCommentInfo* previous = nullptr;
    for (const tagCommentInfo& record : records) {
        const bool leftOver = maybeLeftOver(record.content, previous ? previous->content : nullptr) ||
                              maybeLeftOver(record.state, previous ? previous->state : nullptr);
        comments.push_back(
            leftOver ? commentOf(session, operations, record.id)
                     : Comment{record.id, convertToUtf8(record.content), convertToUtf8(record.state)});
        previous = &record;
    }
    return comments;
}

/// The number of a kind to which comments of that table can be linked.
ENUM_DATA_TYPE linkedKind(CommentTable table, const std::string& word)
{
    if (table == CommentTable::Marks) {
        if (!isKind(word) || !kindNamed(word).listMarked)
            refuse("'" + word + "' bears no marks; a mark is of " + kindWords(true));
        return kindNamed(word).number;
    }
    for (const auto& [name, number] :
         {std::pair("disk", DATA_TYPE_DISK), std::pair("folder", DATA_TYPE_FOLDER),
          std::pair("file", DATA_TYPE_FILE)})
        if (word == name)
            return number;
    if (!isKind(word))
        refuse("'" + word + "' is no kind of record; the kinds are " + kindWords() + ", disk, folder, file");
    return kindNamed(word).number;
}

/// KIND ID... COMMENT.
struct Links
{
    std::string kindWord;
    ENUM_DATA_TYPE kind;
    QList<unsigned int> records;
    unsigned int comment;
};

Links parseLinks(CommentTable table, const std::vector<std::string>& arguments)
{
    const char* const word = operationsOf(table).word;
    if (arguments.size() < 3) {
        refuse(std::string("which records, and which ") + word + "? write KIND ID... and the " + word +
               "'s identifier, as in sat 7 8 1");
    }
    Links links{arguments.front(), linkedKind(table, arguments.front()), {}, 0};
    for (std::size_t i = 1; i + 1 < arguments.size(); ++i)
        links.records.append(parseIdentifier(arguments[i], "identifier of a " + links.kindWord));
    links.comment = parseIdentifier(arguments.back(), std::string("identifier of a ") + word);
    return links;
}

void linkMarks(Session& session, const Links& links, bool link)
{
    int failed = 0;
    ExitCode code = ExitCode::PlaceNotFound;
    for (const unsigned int record : links.records) {
        session.journal.forget();
        const bool done = link ? session.manager.linkImageComment(links.kind, record, links.comment)
                               : session.manager.unlinkImageComment(links.kind, record, links.comment);
        if (!done) {
            ++failed;
            const Reason reason = session.journal.lastReason();
            // The library tells an error of the centre and a mark that is not there alike.
            const bool absent = !link && reason.kind == Reason::Kind::ErrorResult;
            code = absent ? code : ExitCode::CentreFailed;
            complain(links.kindWord + " " + std::to_string(record) +
                     (absent ? " does not bear mark " + std::to_string(links.comment)
                             : ": the centre failed the request: " + describe(reason)));
        }
    }
    if (failed > 0) {
        throw Failure(code, links.records.size() == 1 ? std::string()
                                                      : std::to_string(failed) + " of " +
                                                            std::to_string(links.records.size()) + " failed");
    }
}

void linkComments(Session& session, const Links& links)
{
    session.journal.forget();
    const bool done =
        links.records.size() == 1
            ? session.manager.linkCommentInfoToRecord(links.kind, links.records.front(), links.comment)
            : session.manager.linkCommentInfoToRecord(links.kind, links.records, links.comment);
    if (!done)
        requestFailed(session.journal);
}

void requireContent(const std::string& content)
{
    if (content.empty())
        refuse("without content a text says nothing; only the state may be empty");
}

unsigned int requireAdded(const Session& session, unsigned int id)
{
    if (id == kNone)
        requestFailed(session.journal);
    return id;
}

} // namespace

Action listComments(CommentTable table)
{
    return [table](Session& session) {
        const Operations& operations = operationsOf(table);
        Json list = Json::array();
        Table shownComments({"ID", "CONTENT", "STATE"});
        for (const Comment& comment : commentsOf(session, operations)) {
            list.push_back(jsonOf(comment));
            shownComments.add(
                {std::to_string(comment.id), shownText(comment.content), shownText(comment.state)});
        }
        print(session.json   ? jsonText(list)
              : list.empty() ? std::string("(there are no ") + operations.word + "s)\n"
                             : shownComments.text(listWidth()));
    };
}

Action showComment(CommentTable table, const std::string& id)
{
    const Operations& operations = operationsOf(table);
    return [&operations,
            id = parseIdentifier(id, std::string("identifier of a ") + operations.word)](Session& session) {
        const Comment comment = commentOf(session, operations, id);
        Table shownComment({"", ""});
        shownComment.add({"Identifier", std::to_string(id)});
        shownComment.add({"Content", shownText(comment.content)});
        shownComment.add({"State", shownText(comment.state)});
        print(session.json ? jsonText(jsonOf(comment)) : shownComment.text());
    };
}

Action findComment(CommentTable table, const std::string& content, const std::string& state)
{
    return [table, content, state](Session& session) {
        const Operations& operations = operationsOf(table);
        session.journal.forget();
        const unsigned int id = (session.manager.*operations.find)(QString::fromStdString(content),
                                                                   QString::fromStdString(state));
        // The library tells an error of the centre and an unknown comment alike.
        if (id == kNone && session.journal.lastReason().kind == Reason::Kind::ErrorResult)
            throw Failure(ExitCode::PlaceNotFound, std::string("there is no such ") + operations.word);
        printIdentifier(session, requireAdded(session, id));
    };
}

Action addComment(CommentTable table, const std::string& content, const std::string& state)
{
    requireContent(content);
    return [table, content, state](Session& session) {
        session.journal.forget();
        printIdentifier(session, requireAdded(session, (session.manager.*operationsOf(table).add)(
                                                           QString::fromStdString(content),
                                                           QString::fromStdString(state))));
    };
}

Action addCommentTo(const std::string& kindWord, const std::string& idText, const std::string& content,
                    const std::string& state)
{
    requireContent(content);
    const ENUM_DATA_TYPE kind = linkedKind(CommentTable::Comments, kindWord);
    return [kind, kindWord, id = parseIdentifier(idText, "identifier of a " + kindWord), content,
            state](Session& session) {
        session.journal.forget();
        const unsigned int comment = requireAdded(
            session, session.manager.linkCommentInfoToRecord(kind, id, QString::fromStdString(content),
                                                             QString::fromStdString(state)));
        // Of the link itself only the log tells.
        const Reason reason = session.journal.lastReason();
        printIdentifier(session, comment);
        if (reason.kind != Reason::Kind::None)
            throw Failure(ExitCode::CentreFailed, "the comment was added, but " + kindWord + " " +
                                                      std::to_string(id) +
                                                      " was not linked to it: " + describe(reason));
    };
}

Action linkComment(CommentTable table, const std::vector<std::string>& arguments, bool link)
{
    return [table, links = parseLinks(table, arguments), link](Session& session) {
        if (table == CommentTable::Marks)
            linkMarks(session, links, link);
        else
            linkComments(session, links);
    };
}

Action listCommentTexts(const std::string& content)
{
    return [content](Session& session) {
        QStringList texts;
        answered(session, content.empty()
                              ? session.manager.getCommentContent(texts)
                              : session.manager.getCommentState(QString::fromStdString(content), texts));
        Json list = Json::array();
        std::string lines;
        for (const QString& text : texts) {
            list.push_back(text.toStdString());
            lines += escaped(shownText(text.toStdString())) + "\n";
        }
        print(session.json ? jsonText(list) : lines.empty() ? "(none)\n" : lines);
    };
}

Action listCommentedPlaces(const std::string& project, const std::string& comment)
{
    return [project, id = parseIdentifier(comment, "identifier of a comment")](Session& session) {
        const unsigned int projectID = findProject(session, project).projectID;
        printListing(session, {session.catalogue.foldersWith(projectID, id),
                               session.catalogue.filesWith(projectID, id)});
    };
}

} // namespace cli
