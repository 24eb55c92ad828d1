#ifndef LUMO_CENTRE_BASE_TOKEN_H
#define LUMO_CENTRE_BASE_TOKEN_H

#include <string>

namespace centre {

/// Returns a new secret of 256 random bits, as 43 characters that are safe in headers, files and shells.
std::string newToken();

/// Returns the part of a token that the data folder keeps: its SHA-256, 32 bytes.
std::string tokenHash(const std::string& token);

/// Writes a token and a line end to a file that only its owner may read. Replaces the file's content. Throws
/// Error.
void writeTokenFile(const std::string& path, const std::string& token);

} // namespace centre

#endif
