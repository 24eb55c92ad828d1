#ifndef LUMO_CENTRE_LEDGER_ASSIGNMENTTEXT_H
#define LUMO_CENTRE_LEDGER_ASSIGNMENTTEXT_H

#include "centre/store/RecordWriter.h"

#include <string>

namespace centre {

/// Takes the text of a registration apart: pieces key='value' with one comma between them. A key runs to the
/// last =' of its piece that has a quote behind it, a value to the piece's last quote; what follows that is
/// not looked at. Of a key that comes several times the last value counts. Throws Error(Failed) for a piece
/// of any other form.
RecordTexts parseAssignments(const std::string& text);

} // namespace centre

#endif
