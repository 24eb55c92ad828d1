#include "centre/base/Token.h"

#include "centre/base/Error.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace centre {

std::string newToken()
{
    QByteArray random(32, '\0');
    if (::getrandom(random.data(), random.size(), 0) != random.size())
        throw Error(ExitCode::Failed, "can't get random numbers from the system");
    return random.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals).toStdString();
}

std::string tokenHash(const std::string& token)
{
    return QCryptographicHash::hash(QByteArray::fromStdString(token), QCryptographicHash::Sha256)
        .toStdString();
}

void writeTokenFile(const std::string& path, const std::string& token)
{
    const std::string line = token + "\n";
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR);
    // The mode of open is for a new file only.
    bool written = file >= 0 && ::fchmod(file, S_IRUSR | S_IWUSR) == 0 &&
                   ::write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size()) &&
                   ::fsync(file) == 0;
    const std::string reason = std::strerror(errno);
    if (file >= 0)
        ::close(file);
    if (!written)
        throw Error(ExitCode::Failed, "can't write the token to " + path + ": " + reason);
}

} // namespace centre
