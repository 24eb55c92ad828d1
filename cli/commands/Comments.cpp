#include "cli/base/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/ImageNames.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

namespace cli {

namespace {

using lumo::Comments;
using Kind = lumo::Record::Kind;

/// What comments and marks, which have most commands in common, are called and where they are.
struct CommentTable
{
    const char* word;
    Comments (lumo::Session::*open)() const;
    bool isMarks;
};

constexpr CommentTable kComments = {"comment", &lumo::Session::comments, false};
constexpr CommentTable kMarks = {"mark", &lumo::Session::marks, true};

std::string kindHelp(const CommentTable& table)
{
    return table.isMarks ? "KIND is one of " + imageKindWords(true) + "."
                         : std::string(kKindHelp) + "\nIt can be disk, folder or file, too.";
}

/// A kind whose records can be linked to the comments of a table.
Kind parseLinkedKind(const CommentTable& table, const std::string& word)
{
    const auto kind = lumo::Record::kindOf(word);
    if (table.isMarks) {
        if (!kind || !lumo::Images::canBeMarked(*kind))
            refuse("records of kind '" + word + "' can't have marks; the kinds that can are " +
                   imageKindWords(true));
    } else if (!kind) {
        refuse("'" + word + "' is not a kind of record; the kinds are " + imageKindWords() +
               ", disk, folder, file");
    }
    return *kind;
}

/// A command of one of the tables.
class CommentCommand : public Command
{
protected:
    explicit CommentCommand(const CommentTable& table) : m_Table(table) {}

    Comments open(const lumo::Session& session) const { return (session.*m_Table.open)(); }
    lumo::CommentId parseComment(const std::string& text) const
    {
        return lumo::CommentId(parseIdentifier(text, m_Table.word));
    }

    const CommentTable& m_Table;
};

class ListCommentsCommand : public CommentCommand
{
public:
    ListCommentsCommand(CLI::App& /*app*/, const CommentTable* table) : CommentCommand(*table) {}

    void run(lumo::Session& session, bool json) override
    {
        std::vector<std::vector<Json>> rows;
        for (const Comments::Comment& comment : open(session).all())
            rows.push_back({comment.id.number(), comment.content, comment.state});
        printList({{"id", "ID"}, {"content", "CONTENT"}, {"state", "STATE"}}, rows,
                  std::string("(there are no ") + m_Table.word + "s)", json);
    }
};

class ShowCommentCommand : public CommentCommand
{
public:
    ShowCommentCommand(CLI::App& app, const CommentTable* table) : CommentCommand(*table)
    {
        addArgument(app, "ID", m_Typed, "Its identifier");
    }

    void check(Options& /*options*/) override { m_ID = parseComment(m_Typed); }

    void run(lumo::Session& session, bool json) override
    {
        const Comments::Comment comment = open(session).get(m_ID);
        printFields({{{"id", "Identifier"}, m_ID.number()},
                     {{"content", "Content"}, comment.content},
                     {{"state", "State"}, comment.state}},
                    json);
    }

private:
    std::string m_Typed;
    lumo::CommentId m_ID;
};

/// A command that takes a content and a state.
class CommentTextCommand : public CommentCommand
{
public:
    CommentTextCommand(CLI::App& app, const CommentTable* table) : CommentCommand(*table)
    {
        addArgument(app, "CONTENT", m_Content, "The text");
        addArgument(app, "STATE", m_State, "The text of its state");
    }

protected:
    std::string m_Content;
    std::string m_State;
};

class FindCommentCommand : public CommentTextCommand
{
public:
    using CommentTextCommand::CommentTextCommand;

    void run(lumo::Session& session, bool json) override
    {
        printIdentifier(open(session).find(m_Content, m_State).number(), json);
    }
};

class AddCommentCommand : public CommentTextCommand
{
public:
    AddCommentCommand(CLI::App& app, const CommentTable* table) : CommentTextCommand(app, table)
    {
        if (!table->isMarks) {
            addOptionalArgument(app, "KIND", m_KindWord, "The kind of the record to link");
            addOptionalArgument(app, "ID", m_Typed, "Its identifier");
            explain(app, kindHelp(*table));
        }
    }

    void check(Options& /*options*/) override
    {
        if (m_Content.empty())
            refuse("the content is empty; only the state may be");
        if (m_KindWord.empty())
            return;
        if (m_Typed.empty())
            refuse("which " + m_KindWord + "? write its identifier too");
        m_Kind = parseLinkedKind(m_Table, m_KindWord);
        m_Record = lumo::RecordId(parseIdentifier(m_Typed, m_KindWord));
    }

    void run(lumo::Session& session, bool json) override
    {
        const Comments comments = open(session);
        const lumo::CommentId id = comments.add(m_Content, m_State);
        printIdentifier(id.number(), json);
        if (m_KindWord.empty())
            return;
        try {
            comments.link(m_Kind, {m_Record}, id);
        } catch (const lumo::Error& error) {
            throw Failure(ExitCode::CentreFailed, "the comment was added, but " + m_KindWord + " " + m_Typed +
                                                      " was not linked to it: " + error.reason());
        }
    }

private:
    std::string m_KindWord;
    std::string m_Typed;
    Kind m_Kind{}; ///< of the record to link, if any
    lumo::RecordId m_Record;
};

/// Links records to a comment, sets a mark or removes it.
class LinkCommentCommand : public CommentCommand
{
public:
    LinkCommentCommand(CLI::App& app, const CommentTable* table, bool link)
        : CommentCommand(*table), m_Link(link)
    {
        addArgument(app, "KIND ID...", m_Arguments,
                    "Records of a kind, and then the identifier of the comment or mark");
        explain(app, kindHelp(*table));
    }

    void check(Options& /*options*/) override
    {
        const std::string word = m_Table.word;
        if (m_Arguments.size() < 3) {
            refuse("which records, and which " + word + "? write KIND ID... and the " + word +
                   "'s identifier, as in sat 7 8 1");
        }
        m_Kind = parseLinkedKind(m_Table, m_Arguments.front());
        for (std::size_t i = 1; i + 1 < m_Arguments.size(); ++i)
            m_Records.emplace_back(parseIdentifier(m_Arguments[i], m_Arguments.front()));
        m_Comment = parseComment(m_Arguments.back());
    }

    void run(lumo::Session& session, bool /*json*/) override
    {
        const Comments comments = open(session);
        if (m_Table.isMarks)
            linkMarks(comments);
        else
            comments.link(m_Kind, m_Records, m_Comment);
    }

private:
    /// Marks are set one by one, and one that fails does not stop the others.
    void linkMarks(const Comments& marks) const
    {
        std::size_t failed = 0;
        ExitCode code = ExitCode::NotFound;
        for (const lumo::RecordId record : m_Records) {
            try {
                if (m_Link)
                    marks.link(m_Kind, {record}, m_Comment);
                else
                    marks.unlink(m_Kind, record, m_Comment);
            } catch (const lumo::Error& error) {
                ++failed;
                const bool absent = error.kind() == lumo::Error::Kind::NotFound;
                code = absent ? code : ExitCode::CentreFailed;
                complain(absent ? error.what()
                                : m_Arguments.front() + " " + std::to_string(record.number()) + ": " +
                                      error.what());
            }
        }
        requireAll(code, failed, m_Records.size(), "failed");
    }

    bool m_Link;
    std::vector<std::string> m_Arguments;
    Kind m_Kind{};
    std::vector<lumo::RecordId> m_Records;
    lumo::CommentId m_Comment;
};

class CommentTextsCommand : public Command
{
public:
    explicit CommentTextsCommand(CLI::App& app)
    {
        addOptionalArgument(app, "CONTENT", m_Content, "List the states that comments of this content have");
    }

    void run(lumo::Session& session, bool json) override
    {
        const Comments comments = session.comments();
        const auto texts = m_Content.empty() ? comments.contents() : comments.states(m_Content);
        std::string lines;
        for (const std::string& text : texts)
            lines += escaped(shownText(text)) + "\n";
        print(json ? jsonText(texts) : lines.empty() ? "(none)\n" : lines);
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

    void check(Options& /*options*/) override
    {
        m_Comment = lumo::CommentId(parseIdentifier(m_Typed, "comment"));
    }

    void run(lumo::Session& session, bool json) override
    {
        const lumo::ProjectId project = session.images().project(m_Project).projectId();
        const lumo::Catalogue catalogue = session.catalogue();
        printListing(catalogue.folders(project, m_Comment), catalogue.files(project, m_Comment), json);
    }

private:
    std::string m_Project;
    std::string m_Typed;
    lumo::CommentId m_Comment;
};

void addCommon(CommandSet& commands, const CommentTable& table)
{
    const std::string word = table.word;
    commands.add<ListCommentsCommand>("list", "List all " + word + "s", &table);
    commands.add<ShowCommentCommand>("show", "Show a " + word, &table);
    commands.add<FindCommentCommand>("find", "Find the " + word + " with a content and a state", &table);
    commands.add<LinkCommentCommand>("link", "Link records to a " + word, &table, true);
}

} // namespace

void addComments(CommandSet& commands)
{
    CommandSet comments = commands.addGroup("comment", "List, add and link comments");
    addCommon(comments, kComments);
    comments.add<AddCommentCommand>("add", "Add a comment, and link a record to it", &kComments);
    comments.add<CommentTextsCommand>("texts", "List every content once, or the states of a content");
    comments.add<CommentPlacesCommand>(
        "places", "List the folders and files of a project that are linked to a comment");

    CommandSet marks = commands.addGroup("mark", "List, add and set the marks of images");
    addCommon(marks, kMarks);
    marks.add<AddCommentCommand>("add", "Add a mark", &kMarks);
    marks.add<LinkCommentCommand>("unlink", "Remove a mark from records", &kMarks, false);
}

} // namespace cli
