#include "cli/Connection.h"
#include "cli/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/LocalFiles.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"
#include "cli/progress/Transfer.h"

#include "lumo/core/LumoDataMgr.h"
#include "lumo/core/TextEncoding.h"

namespace cli {

namespace {

/// A program or a module by its number.
struct Product
{
    enum class Kind
    {
        Program,
        Module
    };
    Kind kind = Kind::Program;
    std::string number;
};

/// The name of a version in messages; the latest one when `version` is empty.
std::string shownVersion(const Product& product, const std::string& version)
{
    return (product.kind == Product::Kind::Program ? "program " : "module ") + product.number +
           (version.empty() ? "" : " " + version);
}

/// Throws Failure when there is no such version.
tagVersionInfo versionInfo(Session& session, const Product& product, const std::string& version)
{
    CLumoDataMgr& manager = session.manager;
    const std::string numberText = convertToMultibyte(product.number);
    const std::string versionText = convertToMultibyte(version);
    const char* const number = numberText.c_str();
    const bool program = product.kind == Product::Kind::Program;
    tagVersionInfo info;
    const bool known = version.empty() ? (program ? manager.getLatestVersionBySoftID(number, info)
                                                  : manager.getLatestVersionByAppID(number, info))
                       : program       ? manager.getVersionBySoftID(number, versionText.c_str(), info)
                                       : manager.getVersionByAppID(number, versionText.c_str(), info);
    if (known)
        return info;
    if (session.journal.lastReason().kind == Reason::Kind::CallFailed)
        requestFailed(session.journal);
    throw Failure(ExitCode::PlaceNotFound, "the centre has no " +
                                               (version.empty() ? "version of " : std::string()) +
                                               shownVersion(product, version));
}

class VersionsCommand : public Command
{
public:
    explicit VersionsCommand(CLI::App& app)
    {
        app.add_option("--program", m_Program, "The program's number")->option_text("NO");
        app.add_option("--module", m_Module, "The module's number")->option_text("NO");
        addOptionalArgument(app, "VERSION", m_Version, "The version's number");
    }

    void check(Options& /*options*/) override
    {
        if (m_Program.empty() == m_Module.empty())
            refuse("versions takes either --program NO or --module NO, and a VERSION or none");
        m_Product = m_Module.empty() ? Product{Product::Kind::Program, m_Program}
                                     : Product{Product::Kind::Module, m_Module};
    }

    void run(Session& session) override
    {
        const tagVersionInfo info = versionInfo(session, m_Product, m_Version);
        const struct
        {
            const char* key;
            const char* heading;
            const std::string& text;
        } kTexts[] = {{"text1", "Name", info.text1},
                      {"text2", "Version", info.text2},
                      {"text3", "Released", info.text3},
                      {"text4", "Storage box", info.text4},
                      {"text5", "Notes", info.text5}};
        Json record;
        Table table({"", ""});
        for (const auto& one : kTexts) {
            const std::string text = convertToUtf8(one.text);
            record[one.key] = text;
            table.add({one.heading, shownText(text)});
        }
        print(session.json ? jsonText(record) : table.text());
    }

private:
    std::string m_Program;
    std::string m_Module;
    std::string m_Version;
    Product m_Product;
};

struct PackageRequest
{
    Product product;
    std::string version;
    std::string folder = ".";
    std::string box; ///< its code, or empty
    bool overwrite = false;
};

std::string codesOf(const QMap<QString, QString>& boxes)
{
    return boxes.keys().join(", ").toStdString();
}

/// The code of the box that has a package: the one asked for, else the one that the version names, else the
/// only one of the company.
QString boxOf(const QMap<QString, QString>& boxes, const PackageRequest& request, const tagVersionInfo& info)
{
    QString asked = QString::fromStdString(request.box);
    if (!asked.isEmpty()) {
        if (boxes.contains(asked))
            return asked;
        throw Failure(ExitCode::PlaceNotFound, "your company has no storage box '" + request.box + "'" +
                                                   (boxes.isEmpty() ? "" : "; it has " + codesOf(boxes)));
    }
    QString named = QString::fromStdString(info.text4);
    if (boxes.contains(named))
        return named;
    if (boxes.size() != 1) {
        throw Failure(ExitCode::PlaceNotFound,
                      boxes.isEmpty() ? "your company has no storage box"
                                      : "the package is on one of several storage boxes: say which by --box "
                                        "CODE; they are " +
                                            codesOf(boxes));
    }
    return boxes.firstKey();
}

std::string addressOf(Session& session, const PackageRequest& request, const tagVersionInfo& info)
{
    QMap<QString, QString> boxes;
    const bool answered = session.manager.getKestaList(boxes);
    const QString code = answered ? boxOf(boxes, request, info) : QString();
    std::string address = answered ? session.manager.getKestaIP(code).toStdString() : std::string();
    if (address.empty()) {
        throw Failure(ExitCode::CentreFailed, "the centre did not give the address of the storage box: " +
                                                  describe(session.journal.lastReason()));
    }
    return address;
}

void runPackage(Session& session, const PackageRequest& request)
{
    const std::string address =
        addressOf(session, request, versionInfo(session, request.product, request.version));
    makeFolder(request.folder);
    Transfer transfer;
    transfer.source = shownVersion(request.product, request.version);
    transfer.target = request.folder;
    transfer.folder = request.folder;
    transfer.tellsProgress = true;
    transfer.overwrite = request.overwrite;
    transfer.start = [&session, request, address](const TransferCallback& callback) {
        const auto download = request.product.kind == Product::Kind::Program ? &CLumoDataMgr::downloadBySoftID
                                                                             : &CLumoDataMgr::downloadByAppID;
        return (session.manager.*download)(request.folder.c_str(), address.c_str(),
                                           request.product.number.c_str(), request.version.c_str(),
                                           request.overwrite, callback);
    };
    transfer.refusal = [] { return std::string("the centre has no package of that version"); };
    runTransfers({transfer}, session);
}

class PackageCommand : public Command
{
public:
    PackageCommand(CLI::App& app, Product::Kind kind, const char* number)
    {
        m_Request.product.kind = kind;
        m_Moving.add(app);
        addArgument(app, number, m_Request.product.number, "Its number");
        addArgument(app, "VERSION", m_Request.version, "The version's number");
        addOptionalArgument(app, "DIR", m_Request.folder,
                            "The local folder for it (default: the current one)");
        app.add_option("--box", m_Request.box,
                       "The storage box that has it (default: the one that the version names, or your "
                       "company's only one)")
            ->option_text("CODE");
    }

    void check(Options& options) override { MovingOptions::apply(options); }

    void run(Session& session) override
    {
        m_Request.overwrite = m_Moving.overwrite;
        runPackage(session, m_Request);
    }

private:
    MovingOptions m_Moving;
    PackageRequest m_Request;
};

} // namespace

void addVersions(CommandSet& commands)
{
    commands.add<PackageCommand>("get-program", "Fetch the package of a version of a program",
                                 Product::Kind::Program, "SOFT");
    commands.add<PackageCommand>("get-module", "Fetch the package of a version of a module",
                                 Product::Kind::Module, "APP");
    commands.add<VersionsCommand>("versions",
                                  "Show a version of a program or a module (without VERSION: the latest)");
}

} // namespace cli
