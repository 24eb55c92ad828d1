#ifndef LUMO_CLIENT_TRANSFERTASK_H
#define LUMO_CLIENT_TRANSFERTASK_H

#include "client/Link.h"
#include "client/TransferEnds.h"
#include "client/TransferState.h"

#include <memory>
#include <mutex>
#include <string>

namespace lumo::internal {

/// Hears one task of the library. The copies of its callback are all that keep it alive, and the library
/// drops the last one with the task: that is when the transfer has ended, whatever was reported last. Keeps
/// the connection until then.
class TransferTask
{
public:
    /// `walks`: it goes through the catalogue, so that its failures name the file.
    TransferTask(std::shared_ptr<TransferState> state, std::shared_ptr<Connection> connection, bool walks)
        : m_State(std::move(state)), m_Connection(std::move(connection)), m_Walks(walks)
    {
    }
    TransferTask(const TransferTask&) = delete;
    TransferTask& operator=(const TransferTask&) = delete;
    ~TransferTask();

    void report(const char* task, int code, int percent);

private:
    std::string reason() const;
    Transfer::Outcome outcome() const;

    const std::shared_ptr<TransferState> m_State;
    std::shared_ptr<Connection> m_Connection;
    const bool m_Walks;
    std::mutex m_Mutex;
    bool m_Began = false;
    int m_Percent = 0;
    int m_Code = 0;
    Reason m_Logged; ///< of a failure
    EndSum m_End;
};

} // namespace lumo::internal

#endif
