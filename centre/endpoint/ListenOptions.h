#ifndef LUMO_CENTRE_ENDPOINT_LISTENOPTIONS_H
#define LUMO_CENTRE_ENDPOINT_LISTENOPTIONS_H

#include <string>

namespace centre {

/// The address to listen on, and its protection.
struct ListenOptions
{
    std::string address = "127.0.0.1:0"; ///< "host:port"; port 0 takes a free one
    std::string tlsCertificate;          ///< PEM file; empty with the key: plain text
    std::string tlsKey;                  ///< PEM file
    bool plainText = false;              ///< allows plain text on an address that is not loopback
};

} // namespace centre

#endif
