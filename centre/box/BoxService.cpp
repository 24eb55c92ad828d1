#include "centre/box/BoxService.h"

#include "centre/box/Answer.h"
#include "components/wirecall/Streams.h"
#include "lumo/components/wirecall/RpcServer.h"

#include <memory>
#include <set>
#include <utility>

namespace centre {

namespace {

const std::string& tokenOf(google::protobuf::RpcController* call)
{
    return static_cast<wirecall::ServerCall*>(call)->token();
}

/// Answers with the outcome of `work`.
template <class Response, class Work>
void answer(google::protobuf::RpcController* call, Response& response, google::protobuf::Closure* done,
            Work work)
{
    judge(call, response, work);
    done->Run();
}

} // namespace

void BoxService::open(Controller* call, const haulbox::OpenReq* request, haulbox::OpenRsp* response,
                      Closure* done)
{
    answer(call, *response, done, [&] { m_Downloads.open(tokenOf(call), *request, *response); });
}

void BoxService::list(Controller* call, const haulbox::ListReq* request, haulbox::ListRsp* response,
                      Closure* done)
{
    answer(call, *response, done, [&] { m_Downloads.list(tokenOf(call), *request, *response); });
}

void BoxService::fetch(Controller* call, const haulbox::FetchReq* request, haulbox::FetchRsp* response,
                       Closure* done)
{
    answer(call, *response, done, [&] { m_Downloads.fetch(tokenOf(call), *request, *response); });
}

void BoxService::digests(Controller* call, const haulbox::DigestsReq* request, haulbox::DigestsRsp* response,
                         Closure* done)
{
    answer(call, *response, done, [&] {
        if (request->has_upload())
            m_Uploads.digests(tokenOf(call), *request, *response);
        else
            m_Downloads.digests(*call, tokenOf(call), *request, *response);
    });
}

void BoxService::read(Controller* call, const haulbox::RunReq* request, haulbox::Chunk* chunk, Closure* done)
{
    std::unique_ptr<wirecall::StreamSource> run;
    if (judge(call, *chunk, [&] { run = m_Downloads.read(call, tokenOf(call), *request, *chunk); }))
        wirecall::sendStream(call, std::move(run));
    else
        done->Run();
}

void BoxService::begin(Controller* call, const haulbox::BeginReq* request, haulbox::BeginRsp* response,
                       Closure* done)
{
    answer(call, *response, done, [&] { m_Uploads.begin(tokenOf(call), *request, *response); });
}

void BoxService::write(Controller* call, const haulbox::Chunk* chunk, haulbox::WriteRsp* response,
                       Closure* done)
{
    std::unique_ptr<wirecall::StreamSink> run;
    if (judge(call, *response, [&] { run = m_Uploads.write(call, tokenOf(call), *chunk, *response); }))
        wirecall::receiveStream(call, std::move(run));
    else
        done->Run();
}

void BoxService::finish(Controller* call, const haulbox::FinishReq* request, haulbox::FinishRsp* response,
                        Closure* done)
{
    answer(call, *response, done, [&] { m_Uploads.finish(tokenOf(call), *request, *response); });
}

void BoxService::reserve(Controller* call, const haulbox::ReserveReq* request, haulbox::ReserveRsp* response,
                         Closure* done)
{
    answer(call, *response, done, [&] { m_Uploads.reserve(tokenOf(call), *request); });
}

void BoxService::store(Controller* call, const haulbox::StoreReq* request, haulbox::StoreRsp* response,
                       Closure* done)
{
    answer(call, *response, done, [&] { m_Uploads.store(tokenOf(call), *request, *response); });
}

void BoxService::endRefused()
{
    std::set<Admissions::Right> rights;
    m_Admissions.addRights(rights);
    m_Uploads.underWay().addRights(rights);
    for (const Admissions::Right& right : rights)
        if (!m_Catalogue.mayUse(right.first, right.second)) {
            m_Admissions.end(right);
            m_Uploads.underWay().end(right);
        }
}

} // namespace centre
