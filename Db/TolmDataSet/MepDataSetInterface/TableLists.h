#pragma once

#include "MepDatabase/CallSite.h"
#include "Vorn/OwnerPtr.h"

#include <cstddef>
#include <deque>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tolm {

template <class T> using RecordList = std::vector<vorn::OwnerPtr<T>>;

/// The records in order; an empty entry is left out and reported.
template <class T>
std::vector<const T*> Lend(const RecordList<T>& list, const CallSite& site, const wchar_t* emptyEntry) {
    std::vector<const T*> lent;
    lent.reserve(list.size());
    for (const auto& record : list) {
        if (record)
            lent.push_back(record.get());
        else
            site.Warn(emptyEntry);
    }
    return lent;
}

/// Puts the record in place of the first with the same identifier, or else at the end. Empty entries on the way are
/// reported.
template <class T>
void ReplaceOrAppend(RecordList<T>& list, vorn::OwnerPtr<T> record, const CallSite& site, const wchar_t* emptyEntry) {
    const std::wstring id = record->GetId();
    for (auto& entry : list) {
        if (!entry) {
            site.Warn(emptyEntry);
        } else if (entry->GetId() == id) {
            entry = std::move(record);
            return;
        }
    }
    list.push_back(std::move(record));
}

/// Where each identifier stands in a list, and where the list has empty entries.
template <class T> class RecordIndex {
public:
    explicit RecordIndex(const RecordList<T>& list) {
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (list[i])
                m_positions[list[i]->GetId()].push_back(i);
            else
                m_empty.push_back(i);
        }
    }

    /// Takes the first position of the identifier out of the index; `missing` when there is none.
    std::size_t Take(const std::wstring& id, std::size_t missing) {
        const auto found = m_positions.find(id);
        if (found == m_positions.end() || found->second.empty())
            return missing;
        const std::size_t position = found->second.front();
        found->second.pop_front();
        return position;
    }

    const std::vector<std::size_t>& Empty() const { return m_empty; }

private:
    std::unordered_map<std::wstring, std::deque<std::size_t>> m_positions;
    std::vector<std::size_t> m_empty;
};

/// The words for empty entries of the input and of the list.
struct EraseWords {
    const wchar_t* emptyInput;
    const wchar_t* emptyEntry;
};

/// For each input in order erases the first record with the same identifier; empty entries of the list before it are
/// reported. The inputs may be records of the list itself: nothing goes before all are looked at.
template <class T>
void EraseById(RecordList<T>& list, const std::vector<const T*>& inputs, const CallSite& site,
               const EraseWords& words) {
    RecordIndex<T> index(list);
    std::vector<bool> erased(list.size(), false);
    for (const T* input : inputs) {
        if (input == nullptr) {
            site.Warn(words.emptyInput);
            continue;
        }
        const std::size_t position = index.Take(input->GetId(), list.size());
        for (const std::size_t empty : index.Empty()) {
            if (empty < position)
                site.Warn(words.emptyEntry);
        }
        if (position < list.size())
            erased[position] = true;
    }
    RecordList<T> kept;
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (!erased[i])
            kept.push_back(std::move(list[i]));
    }
    list = std::move(kept);
}

} // namespace tolm
