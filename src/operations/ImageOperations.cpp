#include "lumo/core/LumoDataMgr.h"
#include "operations/AsyncCall.h"

#include <algorithm>

using forgeserver::AnalyzeImageReq;
using forgeserver::AnalyzeImageRsp;
using forgeserver::AnalyzeImagesReq;
using forgeserver::AnalyzeImagesRsp;
using forgeserver::FileCopyFromDbReq;
using forgeserver::FileCopyFromDbRsp;
using forgeserver::FileCopyToDbReq;
using forgeserver::FileCopyToDbRsp;

namespace {

void add(google::protobuf::RepeatedPtrField<forgeserver::Reference>& references,
         const QList<CLumoFilterFile::Reference>& files)
{
    for (const CLumoFilterFile::Reference& file : files) {
        forgeserver::Reference& reference = *references.Add();
        reference.set_ref_id(file.second);
        reference.set_text(file.first.toUtf8().constData());
    }
}

void fill(AnalyzeImageReq& request, const CLumoFilterFile& filter, bool analyzeFlag)
{
    request.set_analyze_flag(analyzeFlag);
    request.set_filter_kind(filter.m_FilterKind);
    request.set_img_name(filter.m_ImgName.toUtf8().constData());
    request.set_sensor(filter.m_Sensor.toUtf8().constData());
    request.set_base_id(filter.m_Base.second);
    add(*request.mutable_main_file(), filter.m_MainFiles);
    add(*request.mutable_meta_file(), filter.m_MetaFiles);
    add(*request.mutable_attach_file(), filter.m_AttachFiles);
    add(*request.mutable_mark(), filter.m_Marks);
}

} // namespace

// Image analysis and server-side copy

void CLumoDataMgr::analyzeImage(const CLumoFilterFile& filter, bool analyzeFlag)
{
    LUMO_LOG("CLumoDataMgr::analyzeImage", "Enter Function : analyzeImage");
    AnalyzeImageReq request;
    fill(request, filter, analyzeFlag);
    asynccall::start<AnalyzeImageReq, AnalyzeImageRsp, const CLumoFilterFile&>(
        m_ForgeChannel, LUMO_FORGE(AnalyzeImage), request, &CLumoDataMgr::analyzeImageFinished, filter);
}

void CLumoDataMgr::analyzeImages(const QList<CLumoFilterFile>& listFilter, bool analyzeFlag)
{
    LUMO_LOG("CLumoDataMgr::analyzeImages", "Enter Function : analyzeImages");
    AnalyzeImagesReq request;
    for (const CLumoFilterFile& filter : listFilter)
        fill(*request.add_analyze_req(), filter, analyzeFlag);
    asynccall::start<AnalyzeImagesReq, AnalyzeImagesRsp, const QList<CLumoFilterFile>&>(
        m_ForgeChannel, LUMO_FORGE(AnalyzeImages), request, &CLumoDataMgr::analyzeImagesFinished, listFilter);
}

void CLumoDataMgr::analyzeImageFinished(wirecall::RpcController* controller, const CLumoFilterFile& filter,
                                        AnalyzeImageRsp* response)
{
    asynccall::Completion<AnalyzeImageRsp>("analyzeImage", "CLumoDataMgr::analyzeImageFinished", controller,
                                           response)
        .end(&AnalyzeImageRsp::analyze_result, [&] { Q_EMIT reqAnalyzeImageFinished(filter); });
}

void CLumoDataMgr::analyzeImagesFinished(wirecall::RpcController* controller,
                                         const QList<CLumoFilterFile>& listFilter, AnalyzeImagesRsp* response)
{
    asynccall::Completion<AnalyzeImagesRsp> completion("analyzeImages", "CLumoDataMgr::analyzeImagesFinished",
                                                       controller, response);
    if (!completion.answered())
        return;
    QList<CLumoFilterFile> analyzed;
    const int answers = std::min(completion.response().analyze_rsp_size(), listFilter.size());
    for (int i = 0; i < answers; ++i) {
        const AnalyzeImageRsp& answer = completion.response().analyze_rsp(i);
        if (answer.analyze_result())
            analyzed.append(listFilter[i]);
        else
            completion.error(asynccall::logText(answer.error_text()).c_str());
    }
    completion.free();
    if (OutstandingCall::answersReachApplication())
        Q_EMIT reqAnalyzeImagesFinished(analyzed);
    completion.leave();
}

void CLumoDataMgr::fileCopy(const QString& srcFile, unsigned int targetA, unsigned int targetB,
                            const QString& relativePath, bool copyFlag)
{
    LUMO_LOG("CLumoDataMgr::fileCopy", "Enter Function : fileCopy");
    FileCopyToDbReq request;
    request.set_src_file(srcFile.toUtf8().constData());
    request.set_target_a(targetA);
    request.set_target_b(targetB);
    if (!relativePath.isEmpty())
        request.set_relative_path(relativePath.toUtf8().constData());
    request.set_copy_flag(copyFlag);
    asynccall::start<FileCopyToDbReq, FileCopyToDbRsp, const QString&>(
        m_ForgeChannel, LUMO_FORGE(FileCopyToDb), request, &CLumoDataMgr::fileCopiedToDb, srcFile);
}

void CLumoDataMgr::fileCopy(unsigned int sourceID, const QString& distPath, bool copyFlag)
{
    LUMO_LOG("CLumoDataMgr::fileCopy", "Enter Function : fileCopy");
    FileCopyFromDbReq request;
    request.set_source_id(sourceID);
    request.set_dist_path(distPath.toUtf8().constData());
    request.set_copy_flag(copyFlag);
    asynccall::start<FileCopyFromDbReq, FileCopyFromDbRsp, const QString&>(
        m_ForgeChannel, LUMO_FORGE(FileCopyFromDb), request, &CLumoDataMgr::fileCopiedFromDb, distPath);
}

void CLumoDataMgr::fileCopiedToDb(wirecall::RpcController* controller, const QString& strFile,
                                  FileCopyToDbRsp* response)
{
    fileCopyToDbFinished(controller, &strFile, response);
}

void CLumoDataMgr::fileCopiedFromDb(wirecall::RpcController* controller, const QString& strFile,
                                    FileCopyFromDbRsp* response)
{
    fileCopyFromDbFinished(controller, &strFile, response);
}

void CLumoDataMgr::fileCopyToDbFinished(wirecall::RpcController* controller, const QString* strFile,
                                        FileCopyToDbRsp* response)
{
    asynccall::Completion<FileCopyToDbRsp>("fileCopy", "CLumoDataMgr::fileCopyToDbFinished", controller,
                                           response)
        .end(&FileCopyToDbRsp::copy_result, [&] { Q_EMIT reqFileCopyFinished(*strFile); });
}

void CLumoDataMgr::fileCopyFromDbFinished(wirecall::RpcController* controller, const QString* strFile,
                                          FileCopyFromDbRsp* response)
{
    asynccall::Completion<FileCopyFromDbRsp>("fileCopy", "CLumoDataMgr::fileCopyFromDbFinished", controller,
                                             response)
        .end(&FileCopyFromDbRsp::copy_result, [&] { Q_EMIT reqFileCopyFinished(*strFile); });
}
