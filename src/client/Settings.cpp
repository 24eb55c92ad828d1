#include "client/Settings.h"

#include "client/Link.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>

namespace lumo {

using internal::refuse;

namespace {

void checkAddress(const std::string& address)
{
    const std::size_t colon = address.rfind(':');
    const std::string port = colon == std::string::npos ? std::string() : address.substr(colon + 1);
    const bool digits =
        !port.empty() && port.size() <= 5 && port.find_first_not_of("0123456789") == std::string::npos;
    const std::string host = address.substr(0, colon);
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    const bool otherForm = host.find_first_of(" \t\r\n/") != std::string::npos ||
                           (!bracketed && host.find(':') != std::string::npos);
    if (host.empty() || otherForm || !digits || std::stoul(port) == 0 || std::stoul(port) > 65535)
        refuse("'" + address + "' is not the address of a centre: write HOST:PORT, as in localhost:7400");
}

/// Opens a file to read; `what` names it in the message when that fails.
std::ifstream opened(const std::string& what, const std::string& path)
{
    std::ifstream file(path);
    const std::string reason = std::strerror(errno);
    std::error_code ignored;
    const bool folder = std::filesystem::is_directory(path, ignored);
    if (!file || folder)
        refuse("can't read the " + what + " '" + path + "': " + (folder ? "it is a folder" : reason));
    return file;
}

void checkCertificate(const std::string& path)
{
    if (path.empty())
        return;
    std::ifstream file = opened("certificate file", path);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) // it is read more than once
        refuse("can't read the certificate file '" + path + "': it is not a regular file");
    for (std::string line; std::getline(file, line);)
        if (line.find("BEGIN CERTIFICATE") != std::string::npos)
            return;
    refuse("'" + path + "' has no certificate: give a PEM file, with a line BEGIN CERTIFICATE");
}

bool flagOf(const std::string& name, const std::string& value)
{
    for (const char* const yes : {"true", "on", "yes", "1"})
        if (value == yes)
            return true;
    for (const char* const no : {"false", "off", "no", "0", ""})
        if (value == no)
            return false;
    refuse(name + ": '" + value + "' is neither true nor false");
}

std::string trimmed(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(" \t\r");
    if (begin == std::string::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(" \t\r") + 1 - begin);
}

/// The lines "key = value" of a file.
std::map<std::string, std::string> readProfile(const std::string& path)
{
    std::ifstream file = opened("profile", path);
    std::map<std::string, std::string> values;
    for (std::string line; std::getline(file, line);) {
        line = trimmed(line);
        const std::size_t sign = line.find('=');
        if (!line.empty() && line.front() != '#' && line.front() != ';' && sign != std::string::npos)
            values[trimmed(line.substr(0, sign))] = trimmed(line.substr(sign + 1));
    }
    return values;
}

/// As "LUMO_TLS_CA" for "tls-ca".
std::string variableOf(const std::string& key)
{
    std::string variable = "LUMO_" + key;
    std::transform(variable.begin(), variable.end(), variable.begin(), [](char byte) {
        return byte == '-' ? '_' : static_cast<char>(byte >= 'a' && byte <= 'z' ? byte - 32 : byte);
    });
    return variable;
}

} // namespace

std::string Session::Settings::defaultProfile()
{
    const char* const configuration = std::getenv("XDG_CONFIG_HOME");
    const char* const home = std::getenv("HOME");
    std::filesystem::path folder;
    if (configuration != nullptr && *configuration != '\0')
        folder = configuration;
    else if (home != nullptr && *home != '\0')
        folder = std::filesystem::path(home) / ".config";
    else
        return {};
    const std::filesystem::path path = folder / "lumo" / "profile.ini";
    std::error_code ignored;
    return std::filesystem::exists(path, ignored) ? path.string() : std::string();
}

unsigned int Session::Settings::milliseconds(const std::string& text)
{
    static const struct
    {
        const char* unit;
        unsigned int milliseconds;
    } kUnits[] = {{"", 1}, {"ms", 1}, {"s", 1000}, {"m", 60000}};
    unsigned int number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    const std::string unit(stop, end);
    for (const auto& known : kUnits)
        if (error == std::errc() && unit == known.unit &&
            number <= std::numeric_limits<unsigned int>::max() / known.milliseconds)
            return number * known.milliseconds;
    refuse("'" + text +
           "' is not a time limit: write a whole number and its unit, as in 500ms, 10s or "
           "2m; 0 for no limit");
}

Session::Settings Session::Settings::load(const std::string& profile)
{
    const char* const named = std::getenv("LUMO_PROFILE");
    std::string path = profile;
    if (path.empty() && named != nullptr)
        path = named;
    if (path.empty())
        path = defaultProfile();
    const auto values = path.empty() ? std::map<std::string, std::string>() : readProfile(path);
    const auto value = [&values](const std::string& key, const std::string& otherwise = {}) {
        if (const char* const variable = std::getenv(variableOf(key).c_str());
            variable != nullptr && *variable != '\0')
            return std::string(variable);
        const auto line = values.find(key);
        return line == values.end() ? otherwise : line->second;
    };
    Settings settings;
    settings.centre = value("centre");
    settings.user = value("user");
    settings.company = value("company");
    settings.tokenFile = value("token-file");
    settings.timeout = milliseconds(value("timeout", "10s"));
    settings.tls = flagOf("tls", value("tls"));
    settings.plainText = flagOf("plain-text", value("plain-text"));
    settings.tlsCa = value("tls-ca");
    settings.codePage = value("code-page", "utf8");
    return settings;
}

namespace internal {

void checkSettings(const Session::Settings& settings)
{
    for (const auto& [value, what] :
         {std::pair(settings.centre, "the centre's address"), std::pair(settings.user, "the user's name"),
          std::pair(settings.company, "the company's number")})
        if (value.empty())
            refuse(std::string(what) + " is missing in the settings");
    checkAddress(settings.centre);
    if (settings.codePage != "utf8" && settings.codePage != "gbk")
        refuse("'" + settings.codePage + "' is not a code page of records: they are utf8 and gbk");
    if ((settings.tls || !settings.tlsCa.empty()) && settings.plainText)
        refuse("plain text contradicts TLS and its certificate: give one or the other");
    checkCertificate(settings.tlsCa);
    tokenOf(settings);
}

std::string tokenOf(const Session::Settings& settings)
{
    const std::string& path = settings.tokenFile;
    if (!settings.token.empty() || path.empty())
        return settings.token;
    std::ifstream file = opened("token file", path);
    std::string token;
    std::string rest;
    std::getline(file, token);
    if (!token.empty() && token.back() == '\r')
        token.pop_back();
    const auto visible = [](unsigned char byte) { return byte > 0x20 && byte < 0x7F; };
    while (std::getline(file, rest) && (rest.empty() || rest == "\r"))
        rest.clear();
    if (token.empty() || !std::all_of(token.begin(), token.end(), visible) || !rest.empty())
        refuse("'" + path + "' has no token: a token is one line of ASCII without blanks");
    return token;
}

} // namespace internal

} // namespace lumo
