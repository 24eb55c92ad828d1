#include "centre/http/AssetLinks.h"

#include <QByteArray>
#include <QUrl>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <charconv>
#include <ctime>

namespace centre {

namespace {

/// "TOKEN-UNTIL-SIGNATURE"
struct Parts
{
    std::uint32_t tokenId = 0;
    std::int64_t until = 0;
    std::string signature;
};

template <class Number>
bool readNumber(const char*& position, const char* end, Number& number)
{
    const auto [next, error] = std::from_chars(position, end, number);
    if (error != std::errc() || next == end || *next != '-')
        return false;
    position = next + 1;
    return true;
}

std::optional<Parts> split(const std::string& link)
{
    Parts parts;
    const char* position = link.data();
    const char* const end = position + link.size();
    if (!readNumber(position, end, parts.tokenId) || !readNumber(position, end, parts.until))
        return std::nullopt;
    parts.signature.assign(position, end);
    return parts;
}

} // namespace

std::string AssetLinks::path(std::uint32_t folderId, const std::string& fileName)
{
    return "/assets/" + std::to_string(folderId) + "/" +
           QUrl::toPercentEncoding(QString::fromStdString(fileName)).toStdString();
}

std::string AssetLinks::sign(std::uint32_t folderId, const std::string& fileName, const User& user,
                             std::int64_t until) const
{
    return path(folderId, fileName) + "?link=" + std::to_string(user.tokenId) + "-" + std::to_string(until) +
           "-" + signature(folderId, fileName, user, until);
}

std::optional<User> AssetLinks::verify(Connection& connection, std::uint32_t folderId,
                                       const std::string& fileName, const std::string& link,
                                       std::string& reason) const
{
    const std::optional<Parts> parts = split(link);
    std::string refused;
    std::optional<User> user;
    if (parts)
        user = connection.userOfToken(parts->tokenId, refused);
    // A forged link learns nothing about the token that it names.
    const std::string expected = user ? signature(folderId, fileName, *user, parts->until) : std::string();
    if (!user || expected.size() != parts->signature.size() ||
        CRYPTO_memcmp(expected.data(), parts->signature.data(), expected.size()) != 0)
        reason = "the link was not made for this file, or its token is not valid any more";
    else if (parts->until < std::time(nullptr))
        reason = "the link has ended";
    else
        return user;
    return std::nullopt;
}

std::string AssetLinks::signature(std::uint32_t folderId, const std::string& fileName, const User& user,
                                  std::int64_t until) const
{
    const std::string signedText = "asset link 1\n" + std::to_string(folderId) + "\n" + fileName + "\n" +
                                   std::to_string(user.companyId) + "\n" + std::to_string(user.tokenId) +
                                   "\n" + std::to_string(until);
    unsigned char bytes[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    ::HMAC(EVP_sha256(), m_Secret.data(), static_cast<int>(m_Secret.size()),
           reinterpret_cast<const unsigned char*>(signedText.data()), signedText.size(), bytes, &size);
    return QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), static_cast<int>(size))
        .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals)
        .toStdString();
}

} // namespace centre
