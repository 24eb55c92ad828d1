#include "cli/Connection.h"
#include "cli/ExitCode.h"
#include "cli/ImageCatalogue.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

#include "lumo/core/LumoDataMgr.h"
#include "lumo/core/TextEncoding.h"

#include <cstring>

namespace cli {

namespace {

/// The two tables of comments, which have most commands in common.
enum class CommentTable
{
    Comments, ///< of a company, for records of any kind
    Marks     ///< of images
};

std::string kindHelp(CommentTable table)
{
    return table == CommentTable::Marks ? "KIND is one of " + kindWords(true) + "."
                                        : std::string(kKindHelp) + "\nIt can be disk, folder or file, too.";
}

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
                      std::string("the centre has no ") + operations.word + " " + std::to_string(id));
    }
    return {id, content.toStdString(), state.toStdString()};
}

/// A text that does not fit the record of a list leaves the text before it there. Whatever could be such a
/// rest is asked for again.
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

/// The number of a kind whose records can be linked to the comments of a table.
ENUM_DATA_TYPE linkedKind(CommentTable table, const std::string& word)
{
    if (table == CommentTable::Marks) {
        if (!isKind(word) || !kindNamed(word).listMarked)
            refuse("records of kind '" + word + "' can't have marks; the kinds that can are " +
                   kindWords(true));
        return kindNamed(word).number;
    }
    for (const auto& [name, number] :
         {std::pair("disk", DATA_TYPE_DISK), std::pair("folder", DATA_TYPE_FOLDER),
          std::pair("file", DATA_TYPE_FILE)})
        if (word == name)
            return number;
    if (!isKind(word))
        refuse("'" + word + "' is not a kind of record; the kinds are " + kindWords() +
               ", disk, folder, file");
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
        links.records.append(parseIdentifier(arguments[i], links.kindWord));
    links.comment = parseIdentifier(arguments.back(), word);
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
            // The library returns the same for an error of the centre and for a mark that is not set.
            const bool absent = !link && reason.kind == Reason::Kind::ErrorResult;
            code = absent ? code : ExitCode::CentreFailed;
            complain(links.kindWord + " " + std::to_string(record) +
                     (absent ? " does not have mark " + std::to_string(links.comment)
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

unsigned int requireAdded(const Session& session, unsigned int id)
{
    if (id == kNone)
        requestFailed(session.journal);
    return id;
}

class ListCommentsCommand : public Command
{
public:
    ListCommentsCommand(CLI::App& /*app*/, CommentTable table) : m_Operations(operationsOf(table)) {}

    void run(Session& session) override
    {
        Json list = Json::array();
        Table table({"ID", "CONTENT", "STATE"});
        for (const Comment& comment : commentsOf(session, m_Operations)) {
            list.push_back(jsonOf(comment));
            table.add({std::to_string(comment.id), shownText(comment.content), shownText(comment.state)});
        }
        print(session.json   ? jsonText(list)
              : list.empty() ? std::string("(there are no ") + m_Operations.word + "s)\n"
                             : table.text(listWidth()));
    }

private:
    const Operations& m_Operations;
};

class ShowCommentCommand : public Command
{
public:
    ShowCommentCommand(CLI::App& app, CommentTable table) : m_Operations(operationsOf(table))
    {
        addArgument(app, "ID", m_Typed, "Its identifier");
    }

    void check(Options& /*options*/) override { m_ID = parseIdentifier(m_Typed, m_Operations.word); }

    void run(Session& session) override
    {
        const Comment comment = commentOf(session, m_Operations, m_ID);
        Table table({"", ""});
        table.add({"Identifier", std::to_string(m_ID)});
        table.add({"Content", shownText(comment.content)});
        table.add({"State", shownText(comment.state)});
        print(session.json ? jsonText(jsonOf(comment)) : table.text());
    }

private:
    const Operations& m_Operations;
    std::string m_Typed;
    unsigned int m_ID = kNone;
};

/// A command that takes a content and a state.
class CommentTextCommand : public Command
{
public:
    CommentTextCommand(CLI::App& app, CommentTable table) : m_Operations(operationsOf(table))
    {
        addArgument(app, "CONTENT", m_Content, "The text");
        addArgument(app, "STATE", m_State, "The text of its state");
    }

protected:
    QString content() const { return QString::fromStdString(m_Content); }
    QString state() const { return QString::fromStdString(m_State); }

    void requireContent() const
    {
        if (m_Content.empty())
            refuse("the content is empty; only the state may be");
    }

    const Operations& m_Operations;

private:
    std::string m_Content;
    std::string m_State;
};

class FindCommentCommand : public CommentTextCommand
{
public:
    using CommentTextCommand::CommentTextCommand;

    void run(Session& session) override
    {
        session.journal.forget();
        const unsigned int id = (session.manager.*m_Operations.find)(content(), state());
        // The library returns the same for an error of the centre and for an unknown comment.
        if (id == kNone && session.journal.lastReason().kind == Reason::Kind::ErrorResult)
            throw Failure(ExitCode::PlaceNotFound, std::string("there is no such ") + m_Operations.word);
        printIdentifier(requireAdded(session, id), session.json);
    }
};

class AddCommentCommand : public CommentTextCommand
{
public:
    AddCommentCommand(CLI::App& app, CommentTable table) : CommentTextCommand(app, table)
    {
        if (table == CommentTable::Comments) {
            addOptionalArgument(app, "KIND", m_KindWord, "The kind of the record to link");
            addOptionalArgument(app, "ID", m_Typed, "Its identifier");
            explain(app, kindHelp(table));
        }
    }

    void check(Options& /*options*/) override
    {
        requireContent();
        if (m_KindWord.empty())
            return;
        if (m_Typed.empty())
            refuse("which " + m_KindWord + "? write its identifier too");
        m_Kind = linkedKind(CommentTable::Comments, m_KindWord);
        m_Record = parseIdentifier(m_Typed, m_KindWord);
    }

    void run(Session& session) override
    {
        session.journal.forget();
        if (m_KindWord.empty()) {
            printIdentifier(requireAdded(session, (session.manager.*m_Operations.add)(content(), state())),
                            session.json);
            return;
        }
        const unsigned int comment = requireAdded(
            session, session.manager.linkCommentInfoToRecord(m_Kind, m_Record, content(), state()));
        // Only the log shows whether the link was made.
        const Reason reason = session.journal.lastReason();
        printIdentifier(comment, session.json);
        if (reason.kind != Reason::Kind::None) {
            throw Failure(ExitCode::CentreFailed, "the comment was added, but " + m_KindWord + " " + m_Typed +
                                                      " was not linked to it: " + describe(reason));
        }
    }

private:
    std::string m_KindWord;
    std::string m_Typed;
    ENUM_DATA_TYPE m_Kind{}; ///< of the record to link, if any
    unsigned int m_Record = kNone;
};

/// Links records to a comment, sets a mark or removes it.
class LinkCommentCommand : public Command
{
public:
    LinkCommentCommand(CLI::App& app, CommentTable table, bool link) : m_Table(table), m_Link(link)
    {
        addArgument(app, "KIND ID...", m_Arguments,
                    "Records of a kind, and then the identifier of the comment or mark");
        explain(app, kindHelp(table));
    }

    void check(Options& /*options*/) override { m_Links = parseLinks(m_Table, m_Arguments); }

    void run(Session& session) override
    {
        if (m_Table == CommentTable::Marks)
            linkMarks(session, m_Links, m_Link);
        else
            linkComments(session, m_Links);
    }

private:
    CommentTable m_Table;
    bool m_Link;
    std::vector<std::string> m_Arguments;
    Links m_Links{};
};

class CommentTextsCommand : public Command
{
public:
    explicit CommentTextsCommand(CLI::App& app)
    {
        addOptionalArgument(app, "CONTENT", m_Content, "List the states that comments of this content have");
    }

    void run(Session& session) override
    {
        QStringList texts;
        answered(session, m_Content.empty()
                              ? session.manager.getCommentContent(texts)
                              : session.manager.getCommentState(QString::fromStdString(m_Content), texts));
        Json list = Json::array();
        std::string lines;
        for (const QString& text : texts) {
            list.push_back(text.toStdString());
            lines += escaped(shownText(text.toStdString())) + "\n";
        }
        print(session.json ? jsonText(list) : lines.empty() ? "(none)\n" : lines);
    }

private:
    std::string m_Content;
};

class CommentPlacesCommand : public Command
{
public:
    explicit CommentPlacesCommand(CLI::App& app)
    {
        addArgument(app, "PROJECT", m_Project, kProjectHelp);
        addArgument(app, "ID", m_Typed, "The comment's identifier");
    }

    void check(Options& /*options*/) override { m_Comment = parseIdentifier(m_Typed, "comment"); }

    void run(Session& session) override
    {
        const unsigned int projectID = findProject(session, m_Project).projectID;
        printListing(session.catalogue.foldersWith(projectID, m_Comment),
                     session.catalogue.filesWith(projectID, m_Comment), session.json);
    }

private:
    std::string m_Project;
    std::string m_Typed;
    unsigned int m_Comment = kNone;
};

void addCommon(CommandSet& commands, CommentTable table)
{
    commands.add<ListCommentsCommand>("list", "List all", table);
    commands.add<ShowCommentCommand>("show", "Show one", table);
    commands.add<FindCommentCommand>("find", "Find the identifier of a content and a state", table);
    commands.add<LinkCommentCommand>("link", "Link records to one", table, true);
}

} // namespace

void addComments(CommandSet& commands)
{
    CommandSet comments = commands.addGroup("comment", "List, add and link comments");
    addCommon(comments, CommentTable::Comments);
    comments.add<AddCommentCommand>("add", "Add one, and link a record to it", CommentTable::Comments);
    comments.add<CommentTextsCommand>("texts", "List every content once, or the states of a content");
    comments.add<CommentPlacesCommand>("places",
                                       "List the folders and files of a project that are linked to one");

    CommandSet marks = commands.addGroup("mark", "List, add and set the marks of images");
    addCommon(marks, CommentTable::Marks);
    marks.add<AddCommentCommand>("add", "Add one", CommentTable::Marks);
    marks.add<LinkCommentCommand>("unlink", "Remove it from records", CommentTable::Marks, false);
}

} // namespace cli
