#ifndef LUMO_CENTRE_FORGE_FORGESERVICE_H
#define LUMO_CENTRE_FORGE_FORGESERVICE_H

#include "centre/base/Cancellation.h"
#include "centre/forge/ServerCopy.h"
#include "centre/image/ImageReader.h"
#include "centre/store/ConnectionPool.h"
#include "forgeserver.pb.h"

#include <string>
#include <vector>

namespace centre {

/// The data operations service. Writes the reason of a refusal to standard error, and to the answer if that
/// has a field for it.
class ForgeService : public forgeserver::ForgeServices
{
public:
    /// Throws what ServerCopy throws.
    ForgeService(ConnectionPool& pool, ImageReader& images, const std::vector<std::string>& copyRoots)
        : m_Pool(pool), m_Images(images), m_Copy(pool, copyRoots)
    {
    }

    const std::vector<std::string>& copyRoots() const { return m_Copy.roots(); }

    /// A failure fails the call, because the answer has no field for it.
    void CreateFolder(google::protobuf::RpcController* controller,
                      const forgeserver::CreateFolderReq* request, forgeserver::CreateFolderRsp* response,
                      google::protobuf::Closure* done) override;

    /// Passes when the caller may read `serv_path` on some storage box. Ignores the rest of the request.
    void CheckTransfer(google::protobuf::RpcController* controller,
                       const forgeserver::CheckTransferReq* request, forgeserver::CheckTransferRsp* response,
                       google::protobuf::Closure* done) override;

    /// Writes a line to standard error and keeps nothing.
    void TransferProgress(google::protobuf::RpcController* controller,
                          const forgeserver::TransferProgressReq* request,
                          forgeserver::TransferProgressRsp* response,
                          google::protobuf::Closure* done) override;

    void AnalyzeImage(google::protobuf::RpcController* controller,
                      const forgeserver::AnalyzeImageReq* request, forgeserver::AnalyzeImageRsp* response,
                      google::protobuf::Closure* done) override;
    void AnalyzeImages(google::protobuf::RpcController* controller,
                       const forgeserver::AnalyzeImagesReq* request, forgeserver::AnalyzeImagesRsp* response,
                       google::protobuf::Closure* done) override;
    void FileCopyToDb(google::protobuf::RpcController* controller,
                      const forgeserver::FileCopyToDbReq* request, forgeserver::FileCopyToDbRsp* response,
                      google::protobuf::Closure* done) override;
    void FileCopyFromDb(google::protobuf::RpcController* controller,
                        const forgeserver::FileCopyFromDbReq* request,
                        forgeserver::FileCopyFromDbRsp* response, google::protobuf::Closure* done) override;

    // image_id is the scene's metadata file in the storage catalogue.
    void Spot5FromDim(google::protobuf::RpcController* controller, const forgeserver::AnalyzeSatReq* request,
                      forgeserver::AnalyzeSatRsp* response, google::protobuf::Closure* done) override;
    void Spot6FromDim(google::protobuf::RpcController* controller, const forgeserver::AnalyzeSatReq* request,
                      forgeserver::AnalyzeSatRsp* response, google::protobuf::Closure* done) override;
    void AlosFromSummary(google::protobuf::RpcController* controller,
                         const forgeserver::AnalyzeSatReq* request, forgeserver::AnalyzeSatRsp* response,
                         google::protobuf::Closure* done) override;
    void AdsFromSup(google::protobuf::RpcController* controller, const forgeserver::AnalyzeAdsReq* request,
                    forgeserver::AnalyzeAdsRsp* response, google::protobuf::Closure* done) override;

private:
    bool mayRead(const std::string& token, const std::string& path);
    /// The user of a call, and whether work for it is to be given up: the token is asked about again every
    /// half second.
    struct Caller
    {
        User user;
        IsCanceled isCanceled;
    };

    Caller callerOf(google::protobuf::RpcController* controller);
    void answerScene(const char* operation, google::protobuf::RpcController* controller,
                     image::SceneForm form, const forgeserver::AnalyzeSatReq& request,
                     forgeserver::AnalyzeSatRsp& response, google::protobuf::Closure& done);

    ConnectionPool& m_Pool;
    ImageReader& m_Images;
    ServerCopy m_Copy;
};

} // namespace centre

#endif
