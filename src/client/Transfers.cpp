#include "lumo/client/Transfers.h"

#include "client/Link.h"
#include "client/TransferState.h"
#include "client/TransferTask.h"
#include "lumo/core/LumoDataMgr.h"

#include <algorithm>
#include <functional>

namespace lumo {

using internal::Call;
using internal::Reason;

namespace {

using Start = std::function<bool(const TransferCallback&)>;

/// Starts a transfer; none when the library refuses.
std::optional<Transfer> started(const Call& call, internal::Link& link, bool walks,
                                const Transfer::Observer& observer, const Start& start)
{
    const auto state = std::make_shared<internal::TransferState>(observer);
    link.watch(state);
    const auto task = std::make_shared<internal::TransferTask>(state, call.connection(), walks);
    const bool begun =
        start([task](const char* name, int, int code, int percent) { task->report(name, code, percent); });
    return begun ? std::optional<Transfer>(Transfer(state)) : std::nullopt;
}

QPair<int, unsigned int> placeOf(const Entry& entry)
{
    switch (entry.kind) {
    case Entry::Kind::Disk:
        return {DATA_TYPE_DISK, entry.disk.number()};
    case Entry::Kind::Folder:
        return {DATA_TYPE_FOLDER, entry.folder.number()};
    case Entry::Kind::File:
        break;
    }
    return {DATA_TYPE_FILE, entry.file.number()};
}

/// Why the library has just refused to start a transfer of or to an entry.
[[noreturn]] void refused(const std::shared_ptr<internal::Link>& link, const Entry& entry)
{
    const Error error = internal::requestError();
    const Reason reason = Call::reason();
    const Entry disk = Catalogue(link).diskOf(entry);
    if (disk.box && disk.box->empty())
        throw Error(Error::Kind::NotFound, "its disk is on no storage box, so that its files can't be moved");
    if (reason.operation == "getKestaInfo" && Call::refused())
        throw Error(Error::Kind::NotFound, "the centre knows no storage box '" + disk.box.value_or("") + "'");
    throw Error(error);
}

std::string listOf(const std::map<std::string, std::string>& boxes)
{
    std::string codes;
    for (const auto& [code, address] : boxes)
        codes += (codes.empty() ? "" : ", ") + code;
    return codes;
}

/// The code of the box that has a package: the one asked for, the one that the version names, or the only
/// one.
std::string boxOf(const std::map<std::string, std::string>& boxes, const std::string& asked,
                  const std::string& named)
{
    if (boxes.empty())
        internal::notFound("your company has no storage box" + (asked.empty() ? "" : " '" + asked + "'"));
    if (!asked.empty()) {
        if (boxes.count(asked) == 0)
            internal::notFound("your company has no storage box '" + asked + "'; it has " + listOf(boxes));
        return asked;
    }
    if (boxes.count(named) > 0)
        return named;
    if (boxes.size() > 1) {
        internal::notFound("the package is on one of several storage boxes: say which; they are " +
                           listOf(boxes));
    }
    return boxes.begin()->first;
}

} // namespace

Transfer::Transfer(std::shared_ptr<internal::TransferState> state) : m_State(std::move(state))
{
}

Transfer::~Transfer()
{
    if (m_State)
        m_State->detach();
}

Transfer::Transfer(Transfer&& other) noexcept = default;

Transfer& Transfer::operator=(Transfer&& other) noexcept
{
    // Ends with what this object had, so that its observer is called no more.
    Transfer moved(std::move(other));
    std::swap(m_State, moved.m_State);
    return *this;
}

Transfer::Progress Transfer::progress() const
{
    return m_State->progress();
}

Transfer::Outcome Transfer::wait() const
{
    return m_State->wait();
}

std::optional<Transfer::Outcome> Transfer::wait(std::chrono::milliseconds limit) const
{
    return m_State->wait(limit);
}

Transfers::Transfers(std::shared_ptr<internal::Link> link) : m_Link(std::move(link))
{
}

Transfer Transfers::get(const Entry& source, const std::string& folder, const Options& options) const
{
    const Call call(*m_Link);
    auto transfer = started(call, *m_Link, true, options.observer, [&](const TransferCallback& callback) {
        return call->download(QString::fromStdString(folder), placeOf(source), options.overwrite, callback);
    });
    if (!transfer)
        refused(m_Link, source);
    return *std::move(transfer);
}

Transfer Transfers::put(const std::string& path, const Entry& target, const Options& options) const
{
    const Call call(*m_Link);
    auto transfer = started(call, *m_Link, false, options.observer, [&](const TransferCallback& callback) {
        return call->upload(QString::fromStdString(path), placeOf(target), kNoIdentifier, options.overwrite,
                            callback);
    });
    if (!transfer)
        refused(m_Link, target);
    return *std::move(transfer);
}

Transfer Transfers::getPackage(const Centre::Product& product, const std::string& version,
                               const std::string& box, const std::string& folder,
                               const Options& options) const
{
    const Centre centre(m_Link);
    const std::string named = centre.version(product, version).box;
    const std::string code = boxOf(centre.boxes(), box, named);
    const Call call(*m_Link);
    const std::string address = call->getKestaIP(QString::fromStdString(code)).toStdString();
    if (address.empty())
        throw internal::requestError("the centre does not know where the storage box is");
    const auto download = product.kind == Centre::Product::Kind::Program ? &CLumoDataMgr::downloadBySoftID
                                                                         : &CLumoDataMgr::downloadByAppID;
    auto transfer = started(call, *m_Link, false, options.observer, [&](const TransferCallback& callback) {
        // The library takes the empty folder for "/".
        return (call.manager().*download)(folder.empty() ? "." : folder.c_str(), address.c_str(),
                                          product.number.c_str(), version.c_str(), options.overwrite,
                                          callback);
    });
    if (!transfer)
        internal::notFound("the centre has no package of that version");
    return *std::move(transfer);
}

} // namespace lumo
