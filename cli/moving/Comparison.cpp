#include "cli/moving/Comparison.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <unordered_map>

namespace cli {

namespace {

constexpr std::size_t kFilesAtOnce = 512;

using Item = lumo::BoxPlace::Item;

class Comparing
{
public:
    Comparing(const lumo::BoxPlace& place, const std::string& local, std::vector<Item> files)
        : m_Place(place), m_Local(local), m_Files(std::move(files)), m_Same(m_Files.size())
    {
    }

    std::vector<bool> run(unsigned int threads)
    {
        std::vector<std::thread> others;
        for (unsigned int i = 1; i < std::min<std::size_t>(threads, m_Files.size() / kFilesAtOnce + 1); ++i)
            others.emplace_back([this] { work(); });
        work();
        for (std::thread& thread : others)
            thread.join();
        if (m_Failure)
            std::rethrow_exception(m_Failure);
        return {m_Same.begin(), m_Same.end()};
    }

private:
    void work()
    {
        try {
            for (std::size_t begin = m_Next.fetch_add(kFilesAtOnce); begin < m_Files.size();
                 begin = m_Next.fetch_add(kFilesAtOnce)) {
                const std::size_t end = std::min(begin + kFilesAtOnce, m_Files.size());
                const std::vector<Item> batch(m_Files.begin() + static_cast<std::ptrdiff_t>(begin),
                                              m_Files.begin() + static_cast<std::ptrdiff_t>(end));
                const std::vector<bool> same = m_Place.compare(batch, m_Local);
                std::copy(same.begin(), same.end(), m_Same.begin() + static_cast<std::ptrdiff_t>(begin));
            }
        } catch (...) {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            m_Failure = std::current_exception();
            m_Next = m_Files.size();
        }
    }

    const lumo::BoxPlace& m_Place;
    const std::string& m_Local;
    const std::vector<Item> m_Files;
    std::vector<char> m_Same; ///< not of bits, which threads would share
    std::atomic<std::size_t> m_Next{0};
    std::mutex m_Mutex;
    std::exception_ptr m_Failure;
};

} // namespace

SameContent contentComparison(const lumo::BoxPlace& place, const Tree& box, const Tree& source,
                              const std::string& local, unsigned int threads)
{
    return [&place, &box, &source, &local, threads](const std::vector<std::size_t>& places) {
        std::unordered_map<std::string, const TreeItem*> onBox;
        for (const TreeItem& item : box.items)
            onBox.emplace(item.path, &item);
        std::vector<Item> files;
        files.reserve(places.size());
        for (const std::size_t index : places) {
            const TreeItem& item = *onBox.at(source.items[index].path);
            files.push_back({item.path, false, item.bytes.value_or(0), item.version});
        }
        return Comparing(place, local, std::move(files)).run(threads);
    };
}

} // namespace cli
