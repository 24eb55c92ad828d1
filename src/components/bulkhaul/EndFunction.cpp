#include "components/bulkhaul/EndFunction.h"

#include <mutex>
#include <utility>

namespace bulkhaul {

namespace {

/// Never destroyed: a transfer may still end while the process does.
struct Observer
{
    std::recursive_mutex mutex; ///< locked during a call; recursive, so that the function can replace itself
    EndFunction function;
};

Observer& observer()
{
    static Observer* const theObserver = new Observer;
    return *theObserver;
}

} // namespace

void setEndFunction(EndFunction function)
{
    const std::lock_guard<std::recursive_mutex> lock(observer().mutex);
    observer().function.swap(function);
}

void callEndFunction(const TransferEnd& end)
{
    const std::lock_guard<std::recursive_mutex> lock(observer().mutex);
    try {
        const EndFunction function = observer().function; // outlives its replacement by itself
        if (function)
            function(end);
    } catch (...) {
        // The application's function must not end the process.
    }
}

} // namespace bulkhaul
