#ifndef LUMO_CLIENT_COMMENTS_H
#define LUMO_CLIENT_COMMENTS_H

#include "lumo/client/Record.h"
#include "lumo/components/platform/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace lumo {

namespace internal {
class Link;
}

/// One of the two tables of comments: the company's comments, for records of any kind, or the marks, for
/// images and products. A light handle that may be copied and used from any thread, with the errors of
/// Images.
class LUMO_EXPORT Comments
{
public:
    enum class Table
    {
        Comments,
        Marks
    };

    struct Comment
    {
        CommentId id;
        std::string content;
        std::string state;
    };

    Comments(std::shared_ptr<internal::Link> link, Table table);

    std::vector<Comment> all() const;
    Comment get(CommentId id) const;
    CommentId find(const std::string& content, const std::string& state) const;
    /// `content` must not be empty.
    CommentId add(const std::string& content, const std::string& state) const;

    /// Links records of a kind to a comment in one call, or to a mark one by one.
    void link(Record::Kind kind, const std::vector<RecordId>& records, CommentId comment) const;
    /// Takes a mark away; throws Error (NotFound) when the record does not have it.
    void unlink(Record::Kind kind, RecordId record, CommentId mark) const;

    /// Of comments: every content once, and the states that comments of a content have.
    std::vector<std::string> contents() const;
    std::vector<std::string> states(const std::string& content) const;

private:
    std::shared_ptr<internal::Link> m_Link;
    Table m_Table;
};

} // namespace lumo

#endif
