#ifndef LUMO_CENTRE_LEDGER_ASSIGNMENTTEXT_H
#define LUMO_CENTRE_LEDGER_ASSIGNMENTTEXT_H

#include "centre/store/RecordWriter.h"

#include <string>

namespace centre {

/// Parses the text of a registration: pieces key='value' with one comma between them. A key ends at the last
/// =' of its piece that a quote follows, a value at the piece's last quote; the rest of the piece is ignored.
/// The last value of a repeated key counts. Throws Error(Failed) for a piece of any other form. Bytes of any
/// kind are safe.
RecordTexts parseAssignments(const std::string& text);

} // namespace centre

#endif
