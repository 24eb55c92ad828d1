#ifndef LUMO_WIRECALL_PEMFILE_H
#define LUMO_WIRECALL_PEMFILE_H

#include <string>

namespace wirecall {

/// Reads a PEM file. Returns false, with the reason in `error`, when it can't be read or has no PEM block.
bool readPemFile(const std::string& path, std::string& content, std::string& error);

} // namespace wirecall

#endif
