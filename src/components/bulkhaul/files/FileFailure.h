#ifndef LUMO_BULKHAUL_FILES_FILEFAILURE_H
#define LUMO_BULKHAUL_FILES_FILEFAILURE_H

#include "haulbox.pb.h"

#include <stdexcept>
#include <string>

namespace bulkhaul {

/// What went wrong with a file or folder, on either side of a transfer.
class FileFailure : public std::runtime_error
{
public:
    FileFailure(haulbox::Status status, const std::string& reason)
        : std::runtime_error(reason), m_Status(status)
    {
    }

    haulbox::Status status() const { return m_Status; }

private:
    haulbox::Status m_Status;
};

/// Throws the failure of a system call on `name`, as errno has it. Its status is `otherwise` unless errno has
/// a better one.
[[noreturn]] void throwErrno(haulbox::Status otherwise, const std::string& name);

} // namespace bulkhaul

#endif
