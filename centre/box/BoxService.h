#ifndef LUMO_CENTRE_BOX_BOXSERVICE_H
#define LUMO_CENTRE_BOX_BOXSERVICE_H

#include "centre/box/Admissions.h"
#include "centre/box/BoxFaults.h"
#include "centre/box/Downloads.h"
#include "centre/box/Uploads.h"
#include "haulbox.pb.h"

namespace centre {

/// The file service of a storage box: serves real files below the folders that the catalogue admits. Safe
/// from any thread. The controllers must be wirecall::ServerCall.
class BoxService : public haulbox::BoxServices
{
public:
    /// The first two must outlive the service. `pause`: how long after its last call an upload is busy.
    BoxService(BoxCatalogue& catalogue, Faults& faults,
               OpenUploads::Pause pause = std::chrono::milliseconds(1000))
        : m_Catalogue(catalogue),
          m_Admissions(catalogue),
          m_Faults(faults),
          m_Downloads(m_Admissions, m_Faults),
          m_Uploads(m_Admissions, catalogue, m_Faults, pause)
    {
    }

    typedef google::protobuf::RpcController Controller;
    typedef google::protobuf::Closure Closure;

    void open(Controller* call, const haulbox::OpenReq* request, haulbox::OpenRsp* response,
              Closure* done) override;
    void list(Controller* call, const haulbox::ListReq* request, haulbox::ListRsp* response,
              Closure* done) override;
    void fetch(Controller* call, const haulbox::FetchReq* request, haulbox::FetchRsp* response,
               Closure* done) override;
    void digests(Controller* call, const haulbox::DigestsReq* request, haulbox::DigestsRsp* response,
                 Closure* done) override;
    void read(Controller* call, const haulbox::RunReq* request, haulbox::Chunk* chunk,
              Closure* done) override;
    void begin(Controller* call, const haulbox::BeginReq* request, haulbox::BeginRsp* response,
               Closure* done) override;
    void write(Controller* call, const haulbox::Chunk* chunk, haulbox::WriteRsp* response,
               Closure* done) override;
    void finish(Controller* call, const haulbox::FinishReq* request, haulbox::FinishRsp* response,
                Closure* done) override;
    void reserve(Controller* call, const haulbox::ReserveReq* request, haulbox::ReserveRsp* response,
                 Closure* done) override;
    void store(Controller* call, const haulbox::StoreReq* request, haulbox::StoreRsp* response,
               Closure* done) override;

    /// The number of handles that clients have: of admitted transfers, and of uploads of large files.
    std::size_t openTransfers() { return m_Admissions.count() + m_Uploads.underWay().count(); }
    /// Ends the handles of users who were removed, may not do so any more or whose token has ended.
    void endRefused();

private:
    BoxCatalogue& m_Catalogue;
    Admissions m_Admissions;
    BoxFaults m_Faults;
    Downloads m_Downloads;
    Uploads m_Uploads;
};

} // namespace centre

#endif
