#ifndef LUMO_CORE_IDENTIFIER_H
#define LUMO_CORE_IDENTIFIER_H

/// The identifier that means none, in records and as the result of a failure.
constexpr unsigned int kNoIdentifier = 0xFFFFFFFF;

#endif
