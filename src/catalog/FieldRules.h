#ifndef LUMO_CATALOG_FIELDRULES_H
#define LUMO_CATALOG_FIELDRULES_H

#include "core/TextEncoding.h"

#include <cstring>
#include <string>

/// How the fields of records are filled from the fields of beans: one function per rule, whose last
/// two arguments are FIELD(name) of the bean.
namespace fieldrules {

/// The arguments of a rule: whether `bean` holds the field, and its value.
#define FIELD(field) bean.has_##field(), bean.field()

/// An identifier; absent, 0xFFFFFFFF.
inline void key(unsigned int& target, bool present, unsigned int value)
{
    target = present ? value : 0xFFFFFFFF;
}

/// A text in the system code page; absent, zero-filled. One that does not fit leaves the field as it was.
template <int Size>
void text(char (&target)[Size], bool present, const std::string& value)
{
    if (present)
        convertToMultibyte(value, target, Size);
    else
        std::memset(target, 0, Size);
}

} // namespace fieldrules

#endif
