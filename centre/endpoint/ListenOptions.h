#ifndef LUMO_CENTRE_ENDPOINT_LISTENOPTIONS_H
#define LUMO_CENTRE_ENDPOINT_LISTENOPTIONS_H

#include <functional>
#include <string>

namespace centre {

class EndpointObserver;

/// The address to listen on, its protection, and how it is watched and stopped.
struct ListenOptions
{
    std::string name = "centre";         ///< in metrics and the call log
    std::string address = "127.0.0.1:0"; ///< "host:port"; port 0 takes a free one
    std::string tlsCertificate;          ///< PEM file; empty with the key: plain text
    std::string tlsKey;                  ///< PEM file
    bool plainText = false;              ///< allows plain text on an address that is not loopback
    std::string announced;               ///< where clients reach a box, if not at `address`: "host:port"
    int graceMilliseconds = 2000;        ///< what running calls have to end when the address is stopped
    int connections = 0;                 ///< at once; 0: as many as the descriptors of the process allow
    int connectionsOfAddress = 500;      ///< of one client address at once; 0: any number
    int databaseConnections = 16;        ///< to a server, at once, of the centre and of each box
    int callsOfUser = 500;               ///< at once; 0: any number
    int methodsOfUser = 0;               ///< that run at once; 0: four for each processor
    /// Called, on any thread, when another process has taken a box's lock, which was lost with the connection
    /// to the database; may be empty.
    std::function<void()> displaced = {};
    EndpointObserver* observer = nullptr; ///< may be null; must outlive the endpoint
    std::string http;                     ///< "host:port" for HTTP, with the same protection; empty: none
    std::string httpUrl; ///< where clients reach that, if not at `http`: "https://host", without a path
};

/// Throws Error for an address that is none, a certificate without its key, and plain text beyond this
/// machine.
void requireSafe(const ListenOptions& options);

/// Throws Error for an address that does not lead to one host, such as 0.0.0.0: the catalogue gives it to
/// clients.
void requireOneHost(const std::string& address);

} // namespace centre

#endif
