#ifndef LUMO_CENTRE_BOX_UPLOADS_H
#define LUMO_CENTRE_BOX_UPLOADS_H

#include "centre/box/Admissions.h"
#include "centre/box/BoxFaults.h"
#include "centre/box/BoxFiles.h"
#include "centre/box/OpenUploads.h"
#include "centre/box/Reservations.h"
#include "components/bulkhaul/files/IncomingSmallFiles.h"
#include "components/wirecall/Streams.h"
#include "haulbox.pb.h"

#include <memory>
#include <optional>
#include <string>

namespace centre {

/// The requests of uploads. Safe from any thread; functions throw FileFailure and BoxFaults::Broken.
class Uploads
{
public:
    /// The first three must outlive the object.
    Uploads(Admissions& admissions, BoxCatalogue& catalogue, BoxFaults& faults, OpenUploads::Pause pause)
        : m_Admissions(admissions),
          m_Catalogue(catalogue),
          m_Faults(faults),
          m_Open(pause),
          m_Reservations(admissions)
    {
    }

    void begin(const std::string& token, const haulbox::BeginReq& request, haulbox::BeginRsp& response);
    void digests(const std::string& token, const haulbox::DigestsReq& request, haulbox::DigestsRsp& response);
    /// Returns what takes the chunks of a stream, of which each has its head in `chunk`.
    std::unique_ptr<wirecall::StreamSink> write(google::protobuf::RpcController* call,
                                                const std::string& token, const haulbox::Chunk& chunk,
                                                haulbox::WriteRsp& response);
    void finish(const std::string& token, const haulbox::FinishReq& request, haulbox::FinishRsp& response);
    void reserve(const std::string& token, const haulbox::ReserveReq& request);
    void store(const std::string& token, const haulbox::StoreReq& request, haulbox::StoreRsp& response);

    /// The large files on their way.
    OpenUploads& underWay() { return m_Open; }

private:
    class Run;

    /// Of a request that has either a transfer's handle or message and path.
    template <class Request>
    Admissions::Pointer admissionOf(const std::string& token, const Request& request);
    std::optional<BoxCatalogue::Entry> storeItem(const Admission& admission, const Located& target,
                                                 const haulbox::Item& item,
                                                 bulkhaul::IncomingSmallFiles& files,
                                                 haulbox::StoreRsp& response);

    Admissions& m_Admissions;
    BoxCatalogue& m_Catalogue;
    BoxFaults& m_Faults;
    OpenUploads m_Open;
    Reservations m_Reservations;
};

} // namespace centre

#endif
