#ifndef LUMO_CENTRE_STAC_JSONTEXT_H
#define LUMO_CENTRE_STAC_JSONTEXT_H

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace centre {

// Items are written as text, field by field: a page of a thousand takes a fraction of the time that it takes
// as objects of a library. All texts are UTF-8; bytes that are not become U+FFFD.

/// Appends a text in quotes.
void appendQuoted(std::string& json, std::string_view text);

/// Whether a text is a number of JSON.
bool isJsonNumber(std::string_view text);

/// Appends a number as it is, and any other text in quotes.
void appendNumberOrText(std::string& json, std::string_view text);

/// Returns a document as text.
std::string textOf(const nlohmann::json& document);

} // namespace centre

#endif
