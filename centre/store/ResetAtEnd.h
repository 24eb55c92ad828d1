#ifndef LUMO_CENTRE_STORE_RESETATEND_H
#define LUMO_CENTRE_STORE_RESETATEND_H

#include <SQLiteCpp/Statement.h>

namespace centre {

/// Resets a statement at the end of a scope, also after an exception. A statement that is not reset keeps the
/// write-ahead log from being shortened and refuses new parameters.
class ResetAtEnd
{
public:
    explicit ResetAtEnd(SQLite::Statement& statement) : m_Statement(statement) {}
    ~ResetAtEnd() { m_Statement.tryReset(); }

    ResetAtEnd(const ResetAtEnd&) = delete;
    ResetAtEnd& operator=(const ResetAtEnd&) = delete;

private:
    SQLite::Statement& m_Statement;
};

} // namespace centre

#endif
