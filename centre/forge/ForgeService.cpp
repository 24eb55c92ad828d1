#include "centre/forge/ForgeService.h"

#include "centre/base/Path.h"
#include "centre/base/Text.h"
#include "centre/forge/ImageAnalysis.h"
#include "centre/forge/SceneFiles.h"
#include "centre/store/ServedRoot.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <chrono>
#include <functional>
#include <iostream>
#include <sstream>

namespace centre {

using google::protobuf::Closure;
using google::protobuf::RpcController;

namespace {

/// Runs the work of an operation. Returns the reason of its failure, writes it to standard error and sends it
/// beside the answer; empty after success.
std::string attempt(const char* operation, RpcController* call, const std::function<void()>& work)
{
    try {
        work();
        return {};
    } catch (const std::exception& exception) {
        const std::string reason = escaped(exception.what());
        std::cerr << "lumo-centre: " + (operation + (": " + reason)) + "\n";
        static_cast<wirecall::ServerCall*>(call)->setReason(reason);
        return reason.empty() ? "failed" : reason;
    }
}

void setResult(forgeserver::AnalyzeImageRsp& response, const std::string& error)
{
    response.set_analyze_result(error.empty());
    if (!error.empty())
        response.set_error_text(error);
}

template <class CopyRsp>
void setResult(CopyRsp& response, const std::string& error)
{
    response.set_copy_result(error.empty());
    if (!error.empty())
        response.set_error_text(error);
}

} // namespace

void ForgeService::CreateFolder(RpcController* controller, const forgeserver::CreateFolderReq* request,
                                forgeserver::CreateFolderRsp* response, Closure* done)
{
    const std::string error = attempt("CreateFolder", controller, [&] {
        response->set_folder_id(m_Copy.makeFolder(callerOf(controller).user, *request));
    });
    if (!error.empty())
        controller->SetFailed(error);
    done->Run();
}

void ForgeService::CheckTransfer(RpcController* controller, const forgeserver::CheckTransferReq* request,
                                 forgeserver::CheckTransferRsp* response, Closure* done)
{
    const std::string& token = static_cast<wirecall::ServerCall*>(controller)->token();
    response->set_passed(mayRead(token, request->serv_path()));
    if (!response->passed())
        static_cast<wirecall::ServerCall*>(controller)
            ->setReason(abbreviated(request->serv_path()) + " is on no disk that the user may read");
    done->Run();
}

void ForgeService::TransferProgress(RpcController*, const forgeserver::TransferProgressReq* request,
                                    forgeserver::TransferProgressRsp*, Closure* done)
{
    std::ostringstream line;
    line << "lumo-centre: transfer " << abbreviated(request->task_id()) << ": " << request->progress_a()
         << " " << request->progress_b() << " " << request->progress_c() << "\n";
    std::cerr << line.str();
    done->Run();
}

void ForgeService::AnalyzeImage(RpcController* controller, const forgeserver::AnalyzeImageReq* request,
                                forgeserver::AnalyzeImageRsp* response, Closure* done)
{
    setResult(*response, attempt("AnalyzeImage", controller, [&] {
        const Caller caller = callerOf(controller);
        analyzeImage(m_Pool, m_Images, caller.user, *request, caller.isCanceled);
    }));
    done->Run();
}

void ForgeService::AnalyzeImages(RpcController* controller, const forgeserver::AnalyzeImagesReq* request,
                                 forgeserver::AnalyzeImagesRsp* response, Closure* done)
{
    for (const forgeserver::AnalyzeImageReq& each : request->analyze_req())
        setResult(*response->add_analyze_rsp(), attempt("AnalyzeImages", controller, [&] {
            const Caller caller = callerOf(controller);
            analyzeImage(m_Pool, m_Images, caller.user, each, caller.isCanceled);
        }));
    done->Run();
}

void ForgeService::FileCopyToDb(RpcController* controller, const forgeserver::FileCopyToDbReq* request,
                                forgeserver::FileCopyToDbRsp* response, Closure* done)
{
    setResult(*response, attempt("FileCopyToDb", controller, [&] {
        const Caller caller = callerOf(controller);
        m_Copy.copyIn(caller.user, *request, caller.isCanceled);
    }));
    done->Run();
}

void ForgeService::FileCopyFromDb(RpcController* controller, const forgeserver::FileCopyFromDbReq* request,
                                  forgeserver::FileCopyFromDbRsp* response, Closure* done)
{
    setResult(*response, attempt("FileCopyFromDb", controller, [&] {
        const Caller caller = callerOf(controller);
        m_Copy.copyOut(caller.user, *request, caller.isCanceled);
    }));
    done->Run();
}

void ForgeService::Spot5FromDim(RpcController* controller, const forgeserver::AnalyzeSatReq* request,
                                forgeserver::AnalyzeSatRsp* response, Closure* done)
{
    answerScene("Spot5FromDim", controller, image::SPOT5, *request, *response, *done);
}

void ForgeService::Spot6FromDim(RpcController* controller, const forgeserver::AnalyzeSatReq* request,
                                forgeserver::AnalyzeSatRsp* response, Closure* done)
{
    answerScene("Spot6FromDim", controller, image::SPOT6, *request, *response, *done);
}

void ForgeService::AlosFromSummary(RpcController* controller, const forgeserver::AnalyzeSatReq* request,
                                   forgeserver::AnalyzeSatRsp* response, Closure* done)
{
    answerScene("AlosFromSummary", controller, image::ALOS, *request, *response, *done);
}

void ForgeService::AdsFromSup(RpcController* controller, const forgeserver::AnalyzeAdsReq* request,
                              forgeserver::AnalyzeAdsRsp* response, Closure* done)
{
    const std::string error = attempt("AdsFromSup", controller, [&] {
        const Caller caller = callerOf(controller);
        image::Scene scene =
            readScene(m_Pool, m_Images, caller.user, request->image_id(), image::ADS, caller.isCanceled);
        auto& texts = *scene.mutable_texts();
        while (texts.size() < 6)
            texts.Add();
        response->set_ads_text1(texts[0]);
        response->set_ads_text2(texts[1]);
        response->set_ads_text3(texts[2]);
        response->set_ads_text4(texts[3]);
        response->set_ads_text5(texts[4]);
        response->set_ads_text6(texts[5]);
    });
    response->set_ads_result(error.empty());
    done->Run();
}

void ForgeService::answerScene(const char* operation, RpcController* controller, image::SceneForm form,
                               const forgeserver::AnalyzeSatReq& request,
                               forgeserver::AnalyzeSatRsp& response, Closure& done)
{
    const std::string error = attempt(operation, controller, [&] {
        const Caller caller = callerOf(controller);
        const image::Scene scene =
            readScene(m_Pool, m_Images, caller.user, request.image_id(), form, caller.isCanceled);
        response.set_sat_name(scene.name());
        *response.mutable_main_file() = scene.main_files();
        *response.mutable_meta_file() = scene.meta_files();
    });
    response.set_sat_result(error.empty());
    done.Run();
}

ForgeService::Caller ForgeService::callerOf(RpcController* controller)
{
    using Clock = std::chrono::steady_clock;
    const auto* call = static_cast<wirecall::ServerCall*>(controller);
    const User user = ConnectionPool::Lease(m_Pool)->requireUser(call->token());
    return {user, [this, call, mightWrite = user.mayWrite(), asked = Clock::now()]() mutable {
                if (call->IsCanceled())
                    return true;
                if (Clock::now() - asked < std::chrono::milliseconds(500))
                    return false;
                asked = Clock::now();
                std::string reason;
                const auto present = ConnectionPool::Lease(m_Pool)->user(call->token(), reason);
                return !present || (mightWrite && !present->mayWrite());
            }};
}

bool ForgeService::mayRead(const std::string& token, const std::string& path)
{
    if (!isPlainAbsolutePath(path))
        return false;
    ConnectionPool::Lease connection(m_Pool);
    std::string reason;
    const std::optional<User> user = connection->user(token, reason);
    return user && !overlap(m_Pool.dataFolder(), path) &&
           findServedRoot(*connection, user->companyId, "", path, Access::Read);
}

} // namespace centre
