#ifndef LUMO_CENTRE_BOX_DOWNLOADS_H
#define LUMO_CENTRE_BOX_DOWNLOADS_H

#include "centre/box/Admissions.h"
#include "centre/box/BoxFaults.h"
#include "centre/box/BoxFiles.h"
#include "centre/box/DigestCache.h"
#include "components/bulkhaul/files/SourceFile.h"
#include "components/wirecall/Streams.h"
#include "haulbox.pb.h"

#include <memory>
#include <string>

namespace centre {

/// The requests of downloads. Safe from any thread; functions throw FileFailure and BoxFaults::Broken.
class Downloads
{
public:
    /// Both must outlive the object.
    Downloads(Admissions& admissions, BoxFaults& faults) : m_Admissions(admissions), m_Faults(faults) {}

    void open(const std::string& token, const haulbox::OpenReq& request, haulbox::OpenRsp& response);
    void list(const std::string& token, const haulbox::ListReq& request, haulbox::ListRsp& response);
    void fetch(const std::string& token, const haulbox::FetchReq& request, haulbox::FetchRsp& response);
    void digests(const google::protobuf::RpcController& call, const std::string& token,
                 const haulbox::DigestsReq& request, haulbox::DigestsRsp& response);
    /// Returns the stream of chunks, of which each is filled into `chunk`.
    std::unique_ptr<wirecall::StreamSource> read(google::protobuf::RpcController* call,
                                                 const std::string& token, const haulbox::RunReq& request,
                                                 haulbox::Chunk& chunk);

private:
    /// A file of a transfer, at the version in the request.
    struct Source
    {
        Source(const Located& located, const std::string& version);

        bulkhaul::SourceFile file;
        std::string key; ///< of its digests
    };
    class Run;

    Admissions& m_Admissions;
    BoxFaults& m_Faults;
    DigestCache m_Digests;
};

} // namespace centre

#endif
