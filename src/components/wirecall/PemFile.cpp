#include "components/wirecall/PemFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace wirecall {

bool readPemFile(const std::string& path, std::string& content, std::string& error)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = "can't read " + path + ": " + std::strerror(errno);
        return false;
    }
    content.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (content.find("-----BEGIN ") == std::string::npos) {
        error = path + " has no PEM block";
        return false;
    }
    return true;
}

} // namespace wirecall
