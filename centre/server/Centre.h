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
    std::vector<std::string> faults;    ///< switches for Faults::add; they apply to the boxes, too
    std::vector<BoxPlace> boxes;        ///< storage boxes to serve with the same options
    std::string replica;                ///< a server that answers reads, see ReadPool; may be empty
    std::vector<std::string> copyRoots; ///< the folders that FileCopyToDb and FileCopyFromDb may use
};

/// A development centre: serves one data folder until it is stopped or destroyed.
/// Every user of the folder may call, and reads the records of the user's company.
class Centre
{
public:
    /// Serves from the return of the constructor on. Throws Error for a folder that another process serves or
    /// that is not a data folder, a copy root that is not a folder, an address that it can't listen on, plain
    /// text beyond this machine, and wrong faults, and throws what Box throws.
    Centre(const std::string& dataFolder, const ServeOptions& options);
    ~Centre();

    Centre(const Centre&) = delete;
    Centre& operator=(const Centre&) = delete;

    int port() const;
    /// "host:port", with the real port.
    std::string address() const;
    /// Where it serves HTTP, "http://host:port"; empty: it does not.
    std::string httpUrl() const;
    /// The boxes that it serves, in the order of the options, with their real ports.
    std::vector<BoxPlace> boxes() const;
    /// The folders of the options, absolute and without symbolic links.
    const std::vector<std::string>& copyRoots() const;
    /// Reads the TLS certificate again, for the boxes, too. Throws Error, and changes nothing, when the files
    /// are not a certificate and its key.
    void reloadCertificate();
    /// Ends running calls, then releases the folder and the boxes. May be called again.
    void stop();
    std::vector<FaultCount> faultCounts() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace centre

#endif
