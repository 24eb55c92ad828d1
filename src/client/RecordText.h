#ifndef LUMO_CLIENT_RECORDTEXT_H
#define LUMO_CLIENT_RECORDTEXT_H

#include "lumo/client/Entry.h"
#include "lumo/core/TextEncoding.h"

#include <cstddef>
#include <cstring>

namespace lumo::internal {

/// A record in which a text that does not fit can be recognised. Such a text leaves its field as it was, and
/// one that fits always ends in NUL; so the last byte of each field is not NUL before the call.
template <class Record>
Record markedRecord()
{
    Record record;
    std::memset(&record, 1, sizeof record);
    return record;
}

/// UTF-8 of a field of a record that was marked; absent for a text that did not fit.
inline Entry::Text textOf(const char* field, std::size_t size)
{
    return field[size - 1] != '\0' ? Entry::Text() : Entry::Text(convertToUtf8(field));
}

template <std::size_t Size>
Entry::Text textOf(const char (&field)[Size])
{
    return textOf(field, Size);
}

/// Whether a field of a list may be one that was left as it was: it then has the text of the record before,
/// or none.
inline bool maybeLeftOver(const char* field, const char* previous)
{
    return *field == '\0' || (previous != nullptr && std::strcmp(field, previous) == 0);
}

} // namespace lumo::internal

#endif
