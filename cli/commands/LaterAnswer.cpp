#include "cli/commands/LaterAnswer.h"

namespace cli {

LaterAnswer await(Session& session, const char* function, unsigned int timeout,
                  const std::function<void()>& call)
{
    session.journal.expect(function);
    call();
    return session.journal.await(timeout);
}

std::string reasonText(const std::string& error)
{
    return error.find("cntl->") == 0 ? "the centre was not reached, or the connection broke" : error;
}

} // namespace cli
