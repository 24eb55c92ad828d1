#ifndef LUMO_CLIENT_TRANSFERS_H
#define LUMO_CLIENT_TRANSFERS_H

#include "lumo/client/Centre.h"
#include "lumo/client/Entry.h"
#include "lumo/components/platform/Export.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace lumo {

class BoxPlace;

namespace internal {
class Link;
class TransferState;
} // namespace internal

/// One transfer that was started. Its members may be used from any thread; the object belongs to one. One
/// that was moved from may only be destroyed or assigned to.
///
/// A transfer can't be cancelled. Once the object is destroyed, or the session closed, its observer is called
/// no more: both wait for a call that is running, except when that call does it. The transfer itself goes on;
/// the process waits for it when it ends.
class LUMO_EXPORT Transfer
{
public:
    struct Outcome
    {
        int code = 0;         ///< 0, or a code of lumo/transfer/TransferCallback.h or of bulkhaul
        std::string text;     ///< what the code means, with the reason if known; empty for 0
        bool resumes = false; ///< what arrived is kept, and the same transfer goes on from there
        // Not known for files that are copied by convert.cfg.
        std::optional<std::uint64_t> keptFiles;  ///< files that were there already and were kept
        std::optional<std::uint64_t> movedBytes; ///< content of files that arrived

        bool done() const { return code == 0; }
        /// Whether the same transfer may succeed soon: the connection broke, nothing moved, or the target was
        /// busy.
        LUMO_EXPORT bool mayPass() const;
        /// Whether the box was not reached any more.
        LUMO_EXPORT bool connectionLost() const;
    };

    struct Progress
    {
        std::string
            task; ///< the transfer's name in the log; what is fetched by its catalogue name, then a UUID
        int percent = 0;                ///< only rises; a get of a place has 0 until its end
        std::optional<Outcome> outcome; ///< of the last call
    };

    /// Hears of the start (0 percent, before anything is touched), of each change and of the end, never two
    /// at once for a transfer, on a thread of the library; the end of a very short transfer may come on the
    /// thread that starts it, before that returns. It must be short, must not throw and must not wait for the
    /// thread that destroys the object or closes the session, nor for the transfer's own end.
    using Observer = std::function<void(const Progress&)>;

    explicit Transfer(std::shared_ptr<internal::TransferState> state);
    ~Transfer();
    Transfer(Transfer&& other) noexcept;
    Transfer& operator=(Transfer&& other) noexcept;

    Progress progress() const;
    /// Waits for the end, of which the observer has heard by then.
    Outcome wait() const;
    /// The same for so long; none when the transfer still runs.
    std::optional<Outcome> wait(std::chrono::milliseconds limit) const;

private:
    std::shared_ptr<internal::TransferState> m_State;
};

/// Starts transfers between this machine and the storage boxes; as many run at once as the machine has cores,
/// the others wait for them. A light handle that may be copied and used from any thread; each member asks the
/// centre what it needs and returns when the transfer is started. When nothing was started it throws Error:
/// Closed, NotFound, NoAnswer or Refused.
class LUMO_EXPORT Transfers
{
public:
    explicit Transfers(std::shared_ptr<internal::Link> link);

    struct Options
    {
        bool overwrite = false; ///< replaces a file or link that exists at a target; otherwise it is kept
        Transfer::Observer observer;
    };

    /// Fetches a disk, a folder with all below it, or a file into a local folder, which must exist; an empty
    /// `folder` is the working folder, here and below.
    Transfer get(const Entry& source, const std::string& folder, const Options& options) const;
    /// Sends a local file, or a folder with all below it, to a disk or a folder.
    Transfer put(const std::string& path, const Entry& target, const Options& options) const;
    /// The same place on its storage box, for an application that decides file by file. Throws Error:
    /// NotFound when it is on no box, NoAnswer when the box is not reached.
    BoxPlace at(const Entry& entry) const;
    /// Fetches the package of a version into a local folder, from the storage box of that code or, without
    /// one, from the box that the version names or the company's only one.
    Transfer getPackage(const Centre::Product& product, const std::string& version, const std::string& box,
                        const std::string& folder, const Options& options) const;

private:
    std::shared_ptr<internal::Link> m_Link;
};

} // namespace lumo

#endif
