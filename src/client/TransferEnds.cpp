#include "client/TransferEnds.h"

#include "lumo/components/bulkhaul/TransferEnd.h"

namespace lumo::internal {

TransferEnds& TransferEnds::instance()
{
    static TransferEnds* const ends = new TransferEnds;
    return *ends;
}

void TransferEnds::open()
{
    bulkhaul::setEndFunction([this](const bulkhaul::TransferEnd& end) { add(end); });
}

void TransferEnds::close()
{
    bulkhaul::setEndFunction({});
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Sums.clear();
}

EndSum TransferEnds::take()
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto known = m_Sums.find(std::this_thread::get_id());
    if (known == m_Sums.end())
        return {};
    EndSum sum = std::move(known->second);
    m_Sums.erase(known);
    return sum;
}

void TransferEnds::add(const bulkhaul::TransferEnd& end)
{
    const std::lock_guard<std::mutex> lock(m_Mutex);
    EndSum& sum = m_Sums[std::this_thread::get_id()];
    ++sum.calls;
    sum.filesKept += end.filesKept;
    sum.bytesMoved += end.bytesMoved;
    if (end.code != 0) {
        sum.reason = end.reason;
        sum.boxPath = end.boxPath;
    }
}

} // namespace lumo::internal
