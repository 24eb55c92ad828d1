#include "centre/content/Version.h"

#include "centre/base/Date.h"
#include "centre/base/Error.h"
#include "centre/base/Text.h"
#include "centre/database/Database.h"
#include "centre/database/Sql.h"
#include "centre/store/Store.h"
#include "lumo/components/platform/Utf8.h"

#include <QDate>
#include <QString>

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace centre {

namespace {

// The order of what a version number may hold at one place.
constexpr char kHyphen = 1;
constexpr char kEnd = 2;
constexpr char kOther = 3;
constexpr char kDot = 4;
constexpr char kNumber = 5;

constexpr std::size_t kLongestVersion = 200; // the length of a run of digits takes one byte

std::string packagePath(const std::string& path)
{
    std::error_code error;
    const fs::path real = fs::canonical(path, error);
    if (error)
        throw Error(ExitCode::Failed, "can't read the package " + escaped(path) + ": " + error.message());
    if (!fs::is_regular_file(real) && !fs::is_directory(real))
        throw Error(ExitCode::WrongUse, "a package must be a file or a folder: " + escaped(path));
    if (real == "/" || !platform::isUtf8(real.string()))
        throw Error(ExitCode::WrongUse, "not a valid path for a package: " + escaped(real.string()));
    return real.string();
}

std::string releaseDate(const std::string& text)
{
    if (text.empty())
        return QDate::currentDate().toString(Qt::ISODate).toStdString();
    if (isoDate(text) != text)
        throw Error(ExitCode::WrongUse, "not a date of the form YYYY-MM-DD: " + escaped(text));
    return text;
}

const Sql kAddVersion("INSERT INTO version(kind, number, versionno, name, kesta_code, app_full_path,"
                      " released, notes, place) VALUES (?, ?, ?, ?, ?, ?, ?, nullif(?, ''), ?)");

} // namespace

std::string versionPlace(const std::string& version)
{
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    std::string place;
    for (auto at = version.begin(); at != version.end();) {
        if (!isDigit(*at)) {
            place += *at == '-' ? kHyphen : *at == '.' ? kDot : kOther;
            if (place.back() == kOther)
                place += *at;
            ++at;
            continue;
        }
        const auto end = std::find_if_not(at, version.end(), isDigit);
        at = std::find_if(at, end, [](char digit) { return digit != '0'; });
        place += kNumber;
        place += static_cast<char>(end - at);
        place.append(at, end);
        at = end;
    }
    return place += kEnd;
}

void addVersion(Store& store, const Version& version)
{
    requireName(version.kind == VersionKind::Program ? "the program number" : "the module number",
                version.number);
    requireName("the version number", version.version);
    if (version.version.size() > kLongestVersion)
        throw Error(ExitCode::WrongUse, "the version number is too long");
    if (!platform::isUtf8(version.notes))
        throw Error(ExitCode::WrongUse, "the notes must be UTF-8");
    const std::string& name = version.name.empty() ? version.number : version.name;
    requireName("the name", name);
    const std::string place = versionPlace(version.version);
    const auto statement = store.database().prepare(kAddVersion);
    statement->bindAll(static_cast<int>(version.kind), version.number, version.version, name, version.boxCode,
                       packagePath(version.path), releaseDate(version.released), version.notes);
    statement->bindBytes(9, place);
    insert(*statement,
           "version " + version.version + " of " + version.number + ", or an equal one, exists already");
}

} // namespace centre
