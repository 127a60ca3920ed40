#pragma once

#include "TolmDataSet/MepEnums.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

/// How the cloud's change of a record meets the local one.
namespace tolm {

/// What the cloud's increment says of an id. An edit is a deletion and an addition of the same id.
enum class CloudChange { None, Added, Deleted, Modified };
/// What the status store says of it.
enum class LocalState { None, Created, Edited, Removed };
/// Whose state the store holds after the merge.
enum class Holds { Local, Cloud, Nothing };
/// What becomes of the status record: a record that stays goes up with the next upload, a forgotten change never
/// happened.
enum class Note { None, Stays, Forgotten };

struct MergeOutcome {
    Holds holds;
    Note note;
    friend bool operator==(const MergeOutcome&, const MergeOutcome&) = default;
};

/// The rule for every combination: rows are the cloud's change, columns the local state (none, created, edited,
/// removed). The cloud wins every conflict. An addition of an id that has changed locally, and a change or deletion
/// of one that was created here, need an id that both sides made; they are no conflicts.
inline constexpr MergeOutcome kMergeRule[4][4] = {
    // The cloud has not changed it: what stands here stays, and goes up.
    {{Holds::Local, Note::None}, {Holds::Local, Note::Stays}, {Holds::Local, Note::Stays}, {Holds::Local, Note::Stays}},
    // Added.
    {{Holds::Cloud, Note::None}, {Holds::Cloud, Note::Stays}, {Holds::Cloud, Note::Stays}, {Holds::Cloud, Note::Stays}},
    // Deleted: a local edit is lost, a local removal is done already.
    {{Holds::Nothing, Note::None},
     {Holds::Nothing, Note::Stays},
     {Holds::Nothing, Note::Forgotten},
     {Holds::Nothing, Note::Forgotten}},
    // Modified: a local edit is lost, what was removed here comes back.
    {{Holds::Cloud, Note::None},
     {Holds::Cloud, Note::Stays},
     {Holds::Cloud, Note::Forgotten},
     {Holds::Cloud, Note::Forgotten}},
};

constexpr const MergeOutcome& OutcomeOf(CloudChange cloud, LocalState local) {
    return kMergeRule[static_cast<std::size_t>(cloud)][static_cast<std::size_t>(local)];
}

/// The ids that an increment changes in one table or group, in the order of its arrays.
struct CloudChanges {
    std::vector<wstring> added;
    std::vector<wstring> deleted;
    std::vector<wstring> modified;

    bool IsEmpty() const { return added.empty() && deleted.empty() && modified.empty(); }
};

/// The ids that changed here, in the order of the status store.
struct LocalChanges {
    std::vector<wstring> created;
    std::vector<wstring> edited;
    std::vector<wstring> removed;

    bool IsEmpty() const { return created.empty() && edited.empty() && removed.empty(); }
};

/// A list of which single occurrences of an id are taken, the first one each time; what is left keeps its order.
class IdPool {
public:
    explicit IdPool(const std::vector<wstring>& ids);
    /// False when none is left.
    bool Take(const wstring& id);
    std::vector<wstring> Left() const;

private:
    struct Occurrences {
        std::size_t left = 0;
        std::size_t taken = 0;
    };
    const std::vector<wstring>& m_ids;
    std::unordered_map<wstring, Occurrences> m_occurrences;
};

/// Takes the ids whose local change is to be forgotten out of the local lists and returns them, deletions before
/// changes. An id that stands in two lists is taken out of both.
std::vector<wstring> TakeConflicts(const CloudChanges& cloud, LocalChanges& local);

} // namespace tolm
