#ifndef LUMO_COMPONENTS_BULKHAUL_BOXTREE_H
#define LUMO_COMPONENTS_BULKHAUL_BOXTREE_H

#include "lumo/components/platform/Export.h"

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace google {
namespace protobuf {
class Message;
}
} // namespace google

namespace wirecall {
class RpcChannel;
}

namespace bulkhaul {

/// A file or folder that a storage box has at or below a path.
struct BoxEntry
{
    std::string below; ///< its path from there; empty: the path itself is this file
    bool folder = false;
    std::uint64_t size = 0; ///< of a file, in bytes
    std::string version;    ///< of a file; changes whenever the file does
};

/// Calls `visit` for everything that the box has below `boxPath`, a folder before its content and otherwise
/// in the order of names, or for the file that `boxPath` is. Returns a Code; unless that is kDone, `visit`
/// has not seen everything and `reason` says why. `message` is as of Download. What `visit` throws ends it.
/// Safe from any thread; memory is bounded by a page of 20000 entries.
LUMO_EXPORT int List(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
                     const google::protobuf::Message* message,
                     const boost::function<void(const BoxEntry&)>& visit, std::string& reason);

/// Compares files of the box, as List gave them, with those of the same path below `localPath`, byte by byte
/// by their digests. `same` gets a value for each: false also for a file that is missing or can't be read on
/// either side. Returns a Code, and `reason` unless it is kDone. Safe from any thread.
LUMO_EXPORT int Compare(const boost::shared_ptr<wirecall::RpcChannel>& channel, const std::string& boxPath,
                        const std::string& localPath, const google::protobuf::Message* message,
                        const std::vector<BoxEntry>& files, std::vector<bool>& same, std::string& reason);

} // namespace bulkhaul

#endif
