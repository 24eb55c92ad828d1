#include "cli/Connection.h"

#include "cli/ExitCode.h"

#include "lumo/components/hubline/Hubline.h"
#include "lumo/components/platform/CodePage.h"
#include "lumo/core/CStringCodec.h"
#include "lumo/core/LumoDataMgr.h"

#include <QTextCodec>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace cli {

namespace {

void require(const std::string& value, const char* option, const char* variable, const char* example)
{
    if (value.empty()) {
        refuse(std::string("--") + option + " is missing: give --" + option + " " + example + ", set " +
               variable + ", or write '" + option + " = " + example + "' in ~/.config/lumo/profile.ini");
    }
}

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

std::string readToken(const std::string& path)
{
    if (path.empty())
        return {};
    std::ifstream file(path);
    std::string token;
    std::string rest;
    std::getline(file, token);
    if (file.bad() || !file.is_open() || token.empty())
        refuse("can't read a token from '" + path + "': its one line is the token");
    if (token.back() == '\r')
        token.pop_back();
    const auto visible = [](unsigned char byte) { return byte > 0x20 && byte < 0x7F; };
    if (!std::all_of(token.begin(), token.end(), visible) || (std::getline(file, rest) && !rest.empty()))
        refuse("'" + path + "' does not hold a token: a token is one line of ASCII without blanks");
    return token;
}

void checkCertificate(const std::string& path)
{
    if (path.empty())
        return;
    std::error_code ignored;
    std::ifstream file(path);
    if (!file || !std::filesystem::is_regular_file(path, ignored))
        refuse("can't read the certificate file '" + path + "'");
    for (std::string line; std::getline(file, line);)
        if (line.find("BEGIN CERTIFICATE") != std::string::npos)
            return;
    refuse("'" + path + "' does not hold a certificate: give a PEM file, with a line BEGIN CERTIFICATE");
}

hubline::Security securityOf(const Options& options)
{
    const bool tls = options.tls || !options.tlsCa.empty();
    if (tls && options.plainText)
        refuse("--plain-text contradicts --tls and --tls-ca: give one or the other");
    if (tls)
        return hubline::Security::Tls;
    return options.plainText ? hubline::Security::PlainText : hubline::Security::Automatic;
}

ExitCode exitCodeOf(hubline::Code code)
{
    switch (code) {
    case hubline::kNoConnection:
        return ExitCode::CentreNotReached;
    case hubline::kTokenRefused:
    case hubline::kInsecure:
        return ExitCode::TokenRefused;
    default:
        return ExitCode::Other;
    }
}

} // namespace

std::string describe(const Reason& reason)
{
    switch (reason.kind) {
    case Reason::Kind::CallFailed:
        return reason.operation + ": " + reason.text;
    case Reason::Kind::NoChannel:
    case Reason::Kind::FileFailed:
        return reason.text;
    case Reason::Kind::KeyMissing:
        return reason.text + " is missing, or no value for it";
    case Reason::Kind::ErrorResult:
        return reason.operation + ": the centre reported an error";
    case Reason::Kind::NullResult:
        return reason.operation + ": nothing found";
    case Reason::Kind::None:
        break;
    }
    return "no reason is known";
}

void requestFailed(const Journal& journal)
{
    throw Failure(ExitCode::CentreFailed, "the centre failed the request: " + describe(journal.lastReason()));
}

Connection::Connection(const Options& options, Journal& journal)
{
    require(options.centre, "centre", "LUMO_CENTRE", "HOST:PORT");
    require(options.user, "user", "LUMO_USER", "NAME");
    require(options.company, "company", "LUMO_COMPANY", "NUMBER");
    checkAddress(options.centre);
    const unsigned int timeout = parseTimeout(options.timeout);
    const std::string token = readToken(options.tokenFile);

    platform::setSystemCodePage(options.codePage == "gbk" ? platform::kGbkCodePage : platform::kUtf8CodePage);
    // What the user types is UTF-8, whatever the records are in.
    CLumoCStringCodec::setCodec(QTextCodec::codecForName("UTF-8"));
    // Names of local files are UTF-8 too, even where the locale says nothing.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));

    open(options, token, timeout);
    logIn(options, token, timeout, journal);
}

Connection::Client::~Client()
{
    hubline::StopHubline();
}

CLumoDataMgr& Connection::manager() const
{
    return CLumoDataMgr::GetSingleTon();
}

void Connection::open(const Options& options, const std::string& token, unsigned int timeout)
{
    hubline::Options settings;
    settings.address = options.centre;
    settings.token = token;
    settings.security = securityOf(options);
    settings.rootCertificate = options.tlsCa;
    settings.timeout = timeout;
    checkCertificate(options.tlsCa);
    std::string reason;
    const hubline::Code code = hubline::StartHubline(settings, reason);
    if (code != hubline::kOpened) {
        throw Failure(exitCodeOf(code),
                      code == hubline::kNoConnection ? "can't reach the centre: " + reason : reason);
    }
    m_Channel = hubline::GetCurrentChannelExt();
}

void Connection::logIn(const Options& options, const std::string& token, unsigned int timeout,
                       Journal& journal)
{
    const ENUM_INIT_ERROR_CODE code =
        manager().initDataMgr(m_Channel.get(), m_Channel.get(), token.c_str(), options.user.c_str(),
                              options.company.c_str(), timeout);
    if (code == INIT_SUCCESS)
        return;
    if (code != INIT_ERROR_COMPANY && code != INIT_ERROR_ROLE)
        throw Failure(ExitCode::Other, "the library did not start (code " + std::to_string(code) + ")");
    const Reason reason = journal.lastReason();
    // The library tells every failed look-up alike; only its log tells a time-out from an unknown name.
    if (reason.kind != Reason::Kind::NullResult)
        throw Failure(ExitCode::CentreFailed, "the centre failed to log you in: " + describe(reason));
    if (code == INIT_ERROR_COMPANY)
        throw Failure(ExitCode::UnknownCompany, "the centre knows no company '" + options.company + "'");
    throw Failure(ExitCode::UnknownUser, "the centre knows no user '" + options.user + "'");
}

} // namespace cli
