#ifndef LUMO_CENTRE_STORE_RESETATEND_H
#define LUMO_CENTRE_STORE_RESETATEND_H

#include <SQLiteCpp/Statement.h>

namespace centre {

/// Ends the statement's read at the end of a scope, also when a step has thrown: one left open would hold
/// back the clean-up of the write-ahead log and refuse the next parameters.
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
