#ifndef LUMO_CLI_COMMANDS_IMAGENAMES_H
#define LUMO_CLI_COMMANDS_IMAGENAMES_H

#include "lumo/client/Images.h"

#include <string>

namespace cli {

// How the user names records of the image catalogue. What is not valid throws Failure (WrongUse).

/// An identifier, which is a number; `what` is the record that it should name.
unsigned int parseIdentifier(const std::string& text, const std::string& what);
bool isImageKind(const std::string& word);
/// A kind of record of the image catalogue.
lumo::Record::Kind parseImageKind(const std::string& word);
/// The words for these kinds; with `marked` only the kinds whose records can have marks.
std::string imageKindWords(bool marked = false);

} // namespace cli

#endif
