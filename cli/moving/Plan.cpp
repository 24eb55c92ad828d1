#include "cli/moving/Plan.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace cli {

namespace {

using Items = std::unordered_map<std::string, const TreeItem*>;

class Planner
{
public:
    Planner(const Tree& source, const Tree& target, Compare compare)
        : m_Source(source), m_Target(target), m_Compare(compare)
    {
        for (const TreeItem& item : target.items)
            m_There.emplace(item.path, &item);
    }

    Plan run(bool remove, const SameContent& sameContent)
    {
        m_Plan.isWhole = m_Source.whole;
        const bool isFile = m_Source.items.size() == 1 && m_Source.items.front().path.empty();
        if (!m_Target.exists && !isFile)
            m_Plan.items.push_back({{}, true, {}, Action::MakeFolder, {}, {}});
        for (std::size_t i = 0; i < m_Source.items.size(); ++i)
            judge(i);
        if (!m_Unknown.empty() && sameContent)
            judgeContent(sameContent);
        dropNeededFolders();
        if (remove && m_Source.whole && m_Source.exists)
            removeRest();
        return std::move(m_Plan);
    }

private:
    void judge(std::size_t place)
    {
        const TreeItem& item = m_Source.items[place];
        const auto found = m_There.find(item.path);
        const TreeItem* const there = found == m_There.end() ? nullptr : found->second;
        if (item.skipped || !item.problem.empty()) {
            m_Plan.isWhole = false;
            add(item, item.skipped ? Action::Skip : Action::Fail, item.problem);
        } else if (there != nullptr && there->folder != item.folder) {
            m_Plan.isWhole = false;
            add(item, Action::Fail,
                std::string("the target has a ") + (there->folder ? "folder" : "file") + " of this name");
        } else if (item.folder) {
            if (there == nullptr)
                add(item, Action::MakeFolder, {});
        } else if (there == nullptr) {
            m_Plan.isWhole = m_Plan.isWhole && !item.file.isSet();
            add(item, Action::Add, {});
        } else {
            judgeFile(place, item, *there);
        }
    }

    void judgeFile(std::size_t place, const TreeItem& item, const TreeItem& there)
    {
        const bool differs = !there.problem.empty() || !item.bytes || item.bytes != there.bytes;
        if (m_Compare == Compare::Existence || (m_Compare == Compare::Size && !differs))
            add(item, Action::Keep, {});
        else
            add(item, Action::Change, {});
        if (m_Compare == Compare::Content && !differs && *item.bytes > 0)
            m_Unknown.emplace_back(place, m_Plan.items.size() - 1);
        else if (m_Compare == Compare::Content && !differs)
            m_Plan.items.back().action = Action::Keep;
    }

    void judgeContent(const SameContent& sameContent)
    {
        std::vector<std::size_t> places;
        places.reserve(m_Unknown.size());
        for (const auto& [source, planned] : m_Unknown)
            places.push_back(source);
        const std::vector<bool> same = sameContent(places);
        for (std::size_t i = 0; i < m_Unknown.size(); ++i)
            if (same.at(i))
                m_Plan.items[m_Unknown[i].second].action = Action::Keep;
    }

    /// Folders that files are moved into are made with them.
    void dropNeededFolders()
    {
        std::unordered_set<std::string> needed;
        for (const PlanItem& item : m_Plan.items) {
            std::string folder = item.path;
            bool isNew = item.action == Action::Add || item.action == Action::Change;
            while (isNew && !folder.empty()) {
                const std::size_t slash = folder.rfind('/');
                folder.resize(slash == std::string::npos ? 0 : slash);
                isNew = needed.insert(folder).second;
            }
        }
        auto& items = m_Plan.items;
        items.erase(std::remove_if(items.begin(), items.end(),
                                   [&](const PlanItem& item) {
                                       const bool isUseless = !m_Source.emptyFolders && !item.path.empty();
                                       return item.action == Action::MakeFolder &&
                                              (isUseless || needed.count(item.path) > 0);
                                   }),
                    items.end());
    }

    void removeRest()
    {
        Items here;
        for (const TreeItem& item : m_Source.items)
            here.emplace(item.path, &item);
        for (auto item = m_Target.items.rbegin(); item != m_Target.items.rend(); ++item)
            if (here.count(item->path) == 0 && !item->skipped && item->problem.empty())
                add(*item, Action::Remove, {});
    }

    void add(const TreeItem& item, Action action, const std::string& reason)
    {
        m_Plan.items.push_back({item.path, item.folder, item.bytes, action, reason, item.file});
    }

    const Tree& m_Source;
    const Tree& m_Target;
    const Compare m_Compare;
    Items m_There;
    std::vector<std::pair<std::size_t, std::size_t>> m_Unknown; ///< places in the source and in the plan
    Plan m_Plan;
};

} // namespace

void Counts::count(const PlanItem& item)
{
    switch (item.action) {
    case Action::Add:
        added += item.folder ? 0 : 1;
        break;
    case Action::Change:
        ++changed;
        break;
    case Action::Keep:
        ++kept;
        break;
    case Action::Skip:
        ++skipped;
        break;
    case Action::Remove:
        ++removed;
        break;
    case Action::Fail:
        ++failed;
        break;
    case Action::MakeFolder:
        break;
    }
}

std::string textOf(const Counts& counts)
{
    const std::pair<std::size_t, const char*> kinds[] = {
        {counts.added, " new"},       {counts.changed, " changed"}, {counts.kept, " kept"},
        {counts.skipped, " skipped"}, {counts.removed, " removed"}, {counts.failed, " failed"}};
    std::string text;
    for (const auto& [number, word] : kinds)
        if (number > 0)
            text += (text.empty() ? "" : ", ") + std::to_string(number) + word;
    return text.empty() ? "no files" : text;
}

Counts Plan::counts() const
{
    Counts counts;
    for (const PlanItem& item : items)
        counts.count(item);
    return counts;
}

Plan makePlan(const Tree& source, const Tree& target, Compare compare, bool remove,
              const SameContent& sameContent)
{
    return Planner(source, target, compare).run(remove, sameContent);
}

} // namespace cli
