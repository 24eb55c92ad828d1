#ifndef LUMO_TESTS_SUPPORT_FAKECOMPONENTS_H
#define LUMO_TESTS_SUPPORT_FAKECOMPONENTS_H

#include "lumo/components/bulkhaul/Bulkhaul.h"
#include "lumo/components/wirecall/RpcChannel.h"

#include <boost/shared_ptr.hpp>

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// What the fakes of bulkhaul and hubline shall answer, and what they were asked. A program that links
/// FakeComponents.cpp has the fakes in the place of the shared libraries' own functions.
struct FakeComponents
{
    bool bulkhaulStarts = true;
    bulkhaul::StatusFunction status; ///< what StartBulkhaul was given
    std::function<void()> onEnd;     ///< runs in EndBulkhaul

    int code = 0; ///< of NewChannel
    boost::shared_ptr<wirecall::RpcChannel> opened, current;

    std::deque<int> results;                  ///< of the transfers in turn, then 0
    std::vector<std::pair<int, int>> reports; ///< code and percentage, of each transfer that has a progress
    std::function<void()> onTransfer;         ///< runs in each transfer

    /// The calls so far: "start 5 5", "open ADDRESS TOKEN", "download BOX LOCAL keep {MESSAGE}", ...
    std::vector<std::string> calls;
    std::mutex mutex; ///< of `calls`

    void note(const std::string& call)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        calls.push_back(call);
    }
};

/// The fakes' present state; `forgetComponents` makes it new.
FakeComponents& components();
void forgetComponents();

#endif
