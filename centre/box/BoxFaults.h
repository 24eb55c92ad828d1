#ifndef LUMO_CENTRE_BOX_BOXFAULTS_H
#define LUMO_CENTRE_BOX_BOXFAULTS_H

#include "centre/endpoint/Faults.h"
#include "components/bulkhaul/files/Chunks.h"

#include <google/protobuf/service.h>

#include <string>

namespace centre {

/// Applies the fault switches to the data that a box moves, and to the messages of its streams. Safe from any
/// thread.
class BoxFaults
{
public:
    /// Breaks a call off.
    struct Broken
    {
        const char* reason = "broken off by a fault switch";
    };

    explicit BoxFaults(Faults& faults) : m_Faults(faults) {}

    /// Counts a message of a stream as a call, and fails as one. Throws Broken.
    void passMessage(const std::string& operation, google::protobuf::RpcController* call);
    /// Changes data that is going to be sent, or throws Broken.
    void send(const std::string& operation, char* data, std::size_t size);
    /// Returns the data that arrived, or after a fault a changed copy of it in `spoiled`. Throws Broken.
    bulkhaul::Pieces arrived(const std::string& operation, const bulkhaul::Pieces& data,
                             std::string& spoiled);

private:
    bool isSpoiled(const std::string& operation, std::size_t size);

    Faults& m_Faults;
};

} // namespace centre

#endif
