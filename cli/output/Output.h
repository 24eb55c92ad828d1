#ifndef LUMO_CLI_OUTPUT_OUTPUT_H
#define LUMO_CLI_OUTPUT_OUTPUT_H

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>

namespace cli {

/// Keeps the fields in the records' order.
using Json = nlohmann::ordered_json;

/// The document as text: indented, UTF-8, no control character raw.
std::string jsonText(const Json& document);
/// The same in one line.
std::string jsonLine(const Json& document);

/// Writes to standard output; throws Failure when that fails, without a message when nobody reads any more.
void print(const std::string& text);

/// Writes out what is still buffered; throws as print does.
void flushOutput();

/// Columns of the terminal that the output is read on, or as many as COLUMNS says.
std::size_t terminalWidth();

/// Columns for a list of names: the terminal's; no limit where the output goes on to another program or a
/// file.
std::size_t listWidth();

/// One line on standard error, escaped: what went wrong, said by lumo.
void complain(const std::string& message);

} // namespace cli

#endif
