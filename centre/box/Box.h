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
    /// Serves from the return of the constructor on, at `listen.address`, or if that is empty at the address
    /// that the data folder has; from there on the data folder tells where the box really is. `faults`
    /// outlives it. Throws Error: no data folder, no such box, one that is served already, what Endpoint
    /// throws, an address that stands for every one of this machine.
    Box(const std::string& dataFolder, const std::string& code, const ListenOptions& listen, Faults& faults);
    ~Box();

    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;

    /// What a box serves.
    static std::vector<const google::protobuf::ServiceDescriptor*> services();

    const std::string& code() const;
    const std::string& address() const;
    /// Ends running calls, then gives the box free. May be called again.
    void stop();

private:
    struct Impl;
    std::unique_ptr<Impl> m_Impl;
};

} // namespace centre

#endif
