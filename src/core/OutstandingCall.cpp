#include "core/OutstandingCall.h"

#include <atomic>

namespace {

std::atomic<int> outstanding{0};
std::atomic<bool> processEnds{false};

} // namespace

OutstandingCall::OutstandingCall()
{
    ++outstanding;
}

OutstandingCall::~OutstandingCall()
{
    --outstanding;
}

bool OutstandingCall::endAll()
{
    processEnds = true;
    return outstanding == 0;
}

bool OutstandingCall::answersReachApplication()
{
    return !processEnds;
}
