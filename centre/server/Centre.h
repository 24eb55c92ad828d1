#ifndef LUMO_CENTRE_SERVER_CENTRE_H
#define LUMO_CENTRE_SERVER_CENTRE_H

#include "centre/endpoint/Faults.h"
#include "centre/endpoint/ListenOptions.h"

#include <memory>
#include <string>
#include <vector>

namespace centre {

/// A storage box by its code, and where it listens.
struct BoxPlace
{
    std::string code;
    std::string address; ///< "host:port"; port 0 takes a free one; empty: the one that the data folder has
};

struct ServeOptions : ListenOptions
{
    std::vector<std::string> faults;    ///< switches as Faults::add takes them; for the boxes, too
    std::vector<BoxPlace> boxes;        ///< storage boxes to serve as well, in the same way
    std::vector<std::string> copyRoots; ///< folders that FileCopyToDb and FileCopyFromDb may reach
};

/// A development centre: serves one data folder until it is stopped or destroyed.
/// The folder's users may call; which of their records they see is for the calls to say.
class Centre
{
public:
    /// Serves from the return of the constructor on. Throws Error: a folder that is served already or is
    /// no data folder, a copy root that is none, an address that can't be listened on, plain text beyond this
    /// machine, wrong faults, what Box throws.
    Centre(const std::string& dataFolder, const ServeOptions& options);
    ~Centre();

    Centre(const Centre&) = delete;
    Centre& operator=(const Centre&) = delete;

    int port() const;
    /// "host:port", with the port that was taken.
    std::string address() const;
    /// The boxes that are served, in the order of the options, with the ports that were taken.
    std::vector<BoxPlace> boxes() const;
    /// The folders of the options, absolute and without symbolic links.
    const std::vector<std::string>& copyRoots() const;
    /// Ends running calls, then gives the folder and the boxes free. May be called again.
    void stop();
    std::vector<FaultCount> faultCounts() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace centre

#endif
