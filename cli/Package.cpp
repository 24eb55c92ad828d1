#include "cli/Commands.h"

#include "cli/Connection.h"
#include "cli/ExitCode.h"
#include "cli/LocalFiles.h"
#include "cli/Transfer.h"

#include "lumo/core/LumoDataMgr.h"

namespace cli {

namespace {

std::string listOf(const QMap<QString, QString>& boxes)
{
    return boxes.keys().join(", ").toStdString();
}

/// The code of the box that holds a package: the one asked for, the one that the version names, or the only
/// one that there is.
QString boxOf(const QMap<QString, QString>& boxes, const PackageRequest& request, const tagVersionInfo& info)
{
    QString asked = QString::fromStdString(request.box);
    if (!asked.isEmpty()) {
        if (boxes.contains(asked))
            return asked;
        throw Failure(ExitCode::PlaceNotFound, "your company has no storage box '" + request.box + "'" +
                                                   (boxes.isEmpty() ? "" : "; it has " + listOf(boxes)));
    }
    QString named = QString::fromStdString(info.text4);
    if (boxes.contains(named))
        return named;
    if (boxes.size() != 1) {
        throw Failure(ExitCode::PlaceNotFound,
                      boxes.isEmpty() ? "your company has no storage box"
                                      : "the package is on one of several storage boxes: say which by --box "
                                        "CODE; they are " +
                                            listOf(boxes));
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
        throw Failure(ExitCode::CentreFailed, "the centre does not tell where the storage box is: " +
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

} // namespace

Action getPackage(const PackageRequest& request)
{
    return [request](Session& session) { runPackage(session, request); };
}

} // namespace cli
