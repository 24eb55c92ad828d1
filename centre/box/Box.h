#ifndef LUMO_CENTRE_BOX_BOX_H
#define LUMO_CENTRE_BOX_BOX_H

#include "centre/endpoint/ListenOptions.h"

#include <memory>
#include <string>
#include <vector>

namespace google::protobuf {
class ServiceDescriptor;
}

namespace centre {

class Faults;

/// Serves the files of one storage box of a data folder until it is stopped or destroyed.
class Box
{
public:
    /// Serves from the return of the constructor on, at `listen.address` or, if that is empty, at the address
    /// in the data folder, and writes there its real address or the announced one, and where it serves HTTP.
    /// `faults` must outlive it.
    /// Throws Error for a folder that is not a data folder, a box that does not exist or that another process
    /// serves, and an address such as 0.0.0.0, and throws what Endpoint throws.
    Box(const std::string& dataFolder, const std::string& code, const ListenOptions& listen, Faults& faults);
    ~Box();

    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;

    /// The services of a box.
    static std::vector<const google::protobuf::ServiceDescriptor*> services();

    const std::string& code() const;
    const std::string& address() const;
    /// Where it serves HTTP, "http://host:port"; empty: it does not.
    std::string httpUrl() const;
    /// Reads the TLS certificate again, as Endpoint does.
    void reloadCertificate();
    /// Ends running calls, then releases the box. May be called again.
    void stop();

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace centre

#endif
