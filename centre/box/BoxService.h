#ifndef LUMO_CENTRE_BOX_BOXSERVICE_H
#define LUMO_CENTRE_BOX_BOXSERVICE_H

#include "centre/box/BoxCatalogue.h"
#include "centre/box/DigestCache.h"
#include "centre/box/Uploads.h"
#include "centre/endpoint/Faults.h"
#include "haulbox.pb.h"

namespace centre {

/// The file service of a storage box: serves real files below the folders that the catalogue admits. Safe
/// from any thread. The controllers must be wirecall::ServerCall.
class BoxService : public haulbox::BoxServices
{
public:
    /// Both must outlive the service.
    BoxService(BoxCatalogue& catalogue, Faults& faults) : m_Catalogue(catalogue), m_Faults(faults) {}

    typedef google::protobuf::RpcController Controller;
    typedef google::protobuf::Closure Closure;

    void read(Controller* call, const haulbox::ReadReq* request, haulbox::ReadRsp* response,
              Closure* done) override;
    void list(Controller* call, const haulbox::ListReq* request, haulbox::ListRsp* response,
              Closure* done) override;
    void fetch(Controller* call, const haulbox::FetchReq* request, haulbox::FetchRsp* response,
               Closure* done) override;
    void digests(Controller* call, const haulbox::DigestsReq* request, haulbox::DigestsRsp* response,
                 Closure* done) override;
    void begin(Controller* call, const haulbox::BeginReq* request, haulbox::BeginRsp* response,
               Closure* done) override;
    void write(Controller* call, const haulbox::WriteReq* request, haulbox::WriteRsp* response,
               Closure* done) override;
    void finish(Controller* call, const haulbox::FinishReq* request, haulbox::FinishRsp* response,
                Closure* done) override;
    void store(Controller* call, const haulbox::StoreReq* request, haulbox::StoreRsp* response,
               Closure* done) override;

private:
    BoxCatalogue::Place admit(Controller* call, const haulbox::Carried& carried, const std::string& path,
                              BoxCatalogue::Use use);
    void readFile(const bulkhaul::Folder& folder, const std::string& name, const haulbox::ReadReq& request,
                  haulbox::ReadRsp& response);
    void fileDigests(const Controller& call, const bulkhaul::Folder& folder, const std::string& name,
                     const haulbox::DigestsReq& request, haulbox::DigestsRsp& response);
    void storeItems(const bulkhaul::Folder& target, const std::string& targetName,
                    const haulbox::StoreReq& request, haulbox::StoreRsp& response);

    // The data that a call moves passes through these functions, which apply the fault switches.
    bool isSpoiled(const std::string& operation, std::size_t size);
    void send(const std::string& operation, std::string& data);
    /// Returns the data that arrived: `data`, or after a fault `spoiled`, a changed copy.
    const std::string& arrived(const std::string& operation, const std::string& data, std::string& spoiled);

    BoxCatalogue& m_Catalogue;
    Faults& m_Faults;
    DigestCache m_Digests;
    Uploads m_Uploads;
};

} // namespace centre

#endif
