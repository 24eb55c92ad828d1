#ifndef LUMO_CLIENT_BOXES_BOXACCESS_H
#define LUMO_CLIENT_BOXES_BOXACCESS_H

#include "client/Link.h"
#include "kestaserver.pb.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <string>

namespace lumo::internal {

/// A channel to a storage box, and what requests carry that judge whether the user may do this.
class BoxAccess
{
public:
    /// Opens a channel. Throws Error (NoAnswer).
    BoxAccess(const Call& call, const std::string& address, FolderId folder);
    BoxAccess(const BoxAccess&) = delete;
    BoxAccess& operator=(const BoxAccess&) = delete;
    ~BoxAccess();

    const boost::shared_ptr<wirecall::RpcChannel>& channel() const { return m_Channel; }
    const kestaserver::DownloadAuthMsg& toRead() const { return m_ToRead; }
    const kestaserver::UploadAuthMsg& toWrite() const { return m_ToWrite; }

private:
    const std::shared_ptr<Connection> m_Connection;
    const std::string m_Address;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
    kestaserver::DownloadAuthMsg m_ToRead;
    kestaserver::UploadAuthMsg m_ToWrite;
};

} // namespace lumo::internal

#endif
