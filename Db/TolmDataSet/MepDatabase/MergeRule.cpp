#include "MepDatabase/MergeRule.h"

namespace tolm {
namespace {

struct CloudList {
    CloudChange change;
    std::vector<wstring> CloudChanges::*ids;
};
constexpr CloudList kCloudLists[] = {
    {CloudChange::Added, &CloudChanges::added},
    {CloudChange::Deleted, &CloudChanges::deleted},
    {CloudChange::Modified, &CloudChanges::modified},
};

struct LocalList {
    LocalState state;
    std::vector<wstring> LocalChanges::*ids;
};
constexpr LocalList kLocalLists[] = {
    {LocalState::Removed, &LocalChanges::removed},
    {LocalState::Edited, &LocalChanges::edited},
    {LocalState::Created, &LocalChanges::created},
};

} // namespace

IdPool::IdPool(const std::vector<wstring>& ids) : m_ids(ids) {
    for (const wstring& id : ids)
        ++m_occurrences[id].left;
}

bool IdPool::Take(const wstring& id) {
    const auto found = m_occurrences.find(id);
    if (found == m_occurrences.end() || found->second.left == 0)
        return false;
    --found->second.left;
    ++found->second.taken;
    return true;
}

std::vector<wstring> IdPool::Left() const {
    std::unordered_map<wstring, std::size_t> passedOver;
    std::vector<wstring> left;
    for (const wstring& id : m_ids) {
        const std::size_t taken = m_occurrences.at(id).taken;
        if (taken == 0 || ++passedOver[id] > taken)
            left.push_back(id);
    }
    return left;
}

std::vector<wstring> TakeConflicts(const CloudChanges& cloud, LocalChanges& local) {
    std::vector<IdPool> pools;
    for (const LocalList& list : kLocalLists)
        pools.emplace_back(local.*list.ids);
    std::vector<wstring> conflicts;
    for (const CloudList& cloudList : kCloudLists) {
        for (const wstring& id : cloud.*cloudList.ids) {
            for (std::size_t i = 0; i < pools.size(); ++i) {
                if (OutcomeOf(cloudList.change, kLocalLists[i].state).note == Note::Forgotten && pools[i].Take(id))
                    conflicts.push_back(id);
            }
        }
    }
    LocalChanges left;
    for (std::size_t i = 0; i < pools.size(); ++i)
        left.*kLocalLists[i].ids = pools[i].Left();
    local = std::move(left);
    return conflicts;
}

} // namespace tolm
