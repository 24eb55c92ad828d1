#ifndef LUMO_CLI_OUTPUT_OUTPUT_H
#define LUMO_CLI_OUTPUT_OUTPUT_H

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>

namespace cli {

/// Keeps keys in the order in which they were added.
using Json = nlohmann::ordered_json;

/// The document as indented UTF-8 text; control characters are escaped.
std::string jsonText(const Json& document);
/// The same on one line.
std::string jsonLine(const Json& document);

/// Writes to standard output. Throws Failure when that fails, without a message when the reader has gone.
void print(const std::string& text);

/// Writes out what is still buffered; throws as print does.
void flushOutput();

/// Columns of the terminal that a file descriptor is; 0 when it is none.
std::size_t terminalColumns(int descriptor);

/// Columns of the terminal that shows the output, or as many as COLUMNS says.
std::size_t terminalWidth();

/// Columns for a list of names: those of the terminal; no limit when another program or a file receives the
/// output.
std::size_t listWidth();

/// Prints a message about a problem on standard error, as one escaped line that begins with "lumo: ".
void complain(const std::string& message);

} // namespace cli

#endif
