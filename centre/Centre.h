#ifndef LUMO_CENTRE_CENTRE_H
#define LUMO_CENTRE_CENTRE_H

#include "centre/Faults.h"

#include <memory>
#include <string>
#include <vector>

namespace centre {

struct ServeOptions
{
    std::string address = "127.0.0.1:0"; ///< "host:port"; port 0 takes a free one
    std::string tlsCertificate;          ///< PEM file; empty with the key: plain text
    std::string tlsKey;                  ///< PEM file
    bool plainText = false;              ///< plain text on an address that is not loopback, too
    std::vector<std::string> faults;     ///< switches as Faults::add takes them
};

/// A development centre: serves one data folder until it is stopped or destroyed.
/// The folder's users may call; which of their records they see is for the calls to say.
class Centre
{
public:
    /// Serves from the return of the constructor on. Throws Error: a folder that is served already or is
    /// no data folder, an address that can't be listened on, plain text beyond this machine, wrong faults.
    Centre(const std::string& dataFolder, const ServeOptions& options);
    ~Centre();

    Centre(const Centre&) = delete;
    Centre& operator=(const Centre&) = delete;

    int port() const;
    /// "host:port", with the port that was taken.
    std::string address() const;
    /// Ends running calls, then gives the folder free. May be called again.
    void stop();
    std::vector<FaultCount> faultCounts() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace centre

#endif
