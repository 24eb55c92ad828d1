#ifndef LUMO_CENTRE_BOX_ANSWER_H
#define LUMO_CENTRE_BOX_ANSWER_H

#include "centre/box/BoxFaults.h"
#include "components/bulkhaul/files/FileFailure.h"

#include <google/protobuf/service.h>

#include <exception>
#include <iostream>
#include <string>

namespace centre {

/// Calls `work` and puts its outcome into the response: DONE, or what it threw. Returns whether it threw
/// nothing. After a fault that breaks the call off, the call has failed.
template <class Response, class Work>
bool judge(google::protobuf::RpcController* call, Response& response, Work work)
{
    const auto failed = [&response](haulbox::Status status, const std::string& reason) {
        response.set_status(status);
        response.set_reason(reason);
        return false;
    };
    response.set_status(haulbox::DONE);
    try {
        work();
        return true;
    } catch (const bulkhaul::FileFailure& failure) {
        return failed(failure.status(), failure.what());
    } catch (const BoxFaults::Broken& broken) {
        call->SetFailed(broken.reason);
        return false;
    } catch (const std::exception& exception) {
        std::cerr << std::string("lumo-centre: box: ") + exception.what() + "\n";
        return failed(haulbox::FAILED, "the box failed: " + std::string(exception.what()));
    }
}

} // namespace centre

#endif
