#include "lumo/core/LastFailure.h"

#include "core/NoteFailure.h"
#include "lumo/components/wirecall/RpcController.h"

#include <algorithm>
#include <cstddef>

namespace lumo {

namespace {

/// Has no destructor, so that calls may fail while a thread or the process ends.
struct Note
{
    LastFailure::Kind kind;
    const char* operation;
    int code;
    std::size_t length;
    char reason[wirecall::kLongestReason];
};

thread_local Note note = {LastFailure::Kind::None, "", 0, 0, {}};

} // namespace

LastFailure lastFailure()
{
    return {note.kind, note.operation, note.code, std::string(note.reason, note.length)};
}

void forgetLastFailure()
{
    note.kind = LastFailure::Kind::None;
    note.operation = "";
    note.code = 0;
    note.length = 0;
}

void noteFailure(LastFailure::Kind kind, const char* operation, int code, const std::string& reason)
{
    note.kind = kind;
    note.operation = operation;
    note.code = code;
    note.length = std::min(reason.size(), sizeof note.reason);
    std::copy_n(reason.data(), note.length, note.reason);
}

} // namespace lumo
