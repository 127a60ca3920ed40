#pragma once

#include "Converge/VersionLog.h"

#include <functional>
#include <iosfwd>
#include <limits>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace tolmtest {

/// Versions and moments that are not there yet, or nobody knows.
inline constexpr long long kNever = std::numeric_limits<long long>::max() / 4;
/// Edits of the dataset that works through the cloud have marks from here on.
inline constexpr long kOutsideMarks = 1'000'000'000;

/// One edit that a worker began.
struct Attempt {
    enum class End { Done, Refused, Killed };
    std::string what;
    std::string id;
    long mark = 0;
    long long from = 0; ///< version that the file told before
    End end = End::Killed;
    long long ended = kNever; ///< moment at which it had been made
};

/// One upload, with a merge before it or without.
struct Sending {
    bool merges = false;
    long long began = 0; ///< moment before it read the file
    long long from = 0;  ///< version that the cloud had before
    long long to = 0;    ///< the one that the cloud told after it; while it is open, nobody knows
    bool done = false;   ///< and stamped in the file
    bool open = true;    ///< it failed or was killed, and the cloud was not asked yet
    std::string token;

    /// Of an upload that was done the cloud tells the very version that it made.
    bool MayHaveMade(long long version) const { return done ? version == to : from < version && version <= to; }
};

/// What a worker did, over all its runs, as the lines of its processes tell. Moments are microseconds of the machine's
/// steady clock, the same for all processes.
struct Ledger {
    std::vector<Attempt> attempts;
    std::vector<Sending> sendings;
    std::map<std::string, int> syncs; ///< by result and outcome
    std::vector<std::string> warnings;
    long longestEdit = 0; ///< in milliseconds, as below
    long longestSync = 0;
    long next = 1; ///< mark
    int kills = 0;

    void BeginRun(std::string token) { m_token = std::move(token); }
    void Take(const std::string& line);
    /// At the end of all: the last version that the cloud told under a token, or made with it, closes what is open.
    void TakeLastVersions(const std::function<long long(const std::string& token)>& versionOf);

    /// True for a version that came to the cloud while a merge and upload was under way that told the file a version.
    bool Merges(long long version) const;

private:
    void TakeEnd(const std::string& result, std::istream& words);
    void TakeSync(std::istream& words);
    void Close(long long version);

    std::string m_token; ///< of the run
};

/// What became of an edit that was said to be made.
enum class EditFate {
    Landed,                   ///< the cloud had it
    Followed,                 ///< the same worker changed the setting once more
    OverriddenFromOutside,    ///< the cloud's change came down while the edit was not sent yet
    OverriddenByOwnUpload,    ///< it was made between an upload of the file and the moment the file told that version
    OnARecordThatHadComeBack, ///< the same happened to a deletion before
    Lost
};
const char* NameOf(EditFate fate);

/// Judges by the states that the cloud had of the edit's setting, and by the uploads of all who work on the file. An
/// edit gives way to a state of the cloud after the version that the file told. It cannot, where an upload that read
/// the file after the edit was done before that state came; nor to a state that the file itself sent, where that
/// upload read the file after the edit, since it would have sent the edit.
class EditJudge {
public:
    EditJudge(std::span<const Ledger> ledgers, const VersionLog& log) : m_ledgers(ledgers), m_log(log) {}

    EditFate FateOf(const Ledger& ledger, std::size_t place) const;

    /// True for a record that was deleted after it had gone up, when the file did not tell the version of that upload
    /// yet. A merge from the older version takes the record for an addition of the cloud: it stands again, the note of
    /// the deletion stays too, and the cloud lets the record go.
    bool CameBack(const std::string& id) const;

    const std::vector<LoggedState>& StatesOf(const std::string& id) const;

private:
    bool GivesWay(const Attempt& edit, long long version, bool isOwn) const;
    bool GivesWayToAnyBirth(const Attempt& edit, bool isOwn) const;
    bool GivesWayToARemoval(const Attempt& edit) const;
    bool IsOnARecordThatHadComeBack(const Ledger& ledger, std::size_t place) const;
    bool WasSentBefore(long long moment, long long version) const;
    bool WasEverythingSentBetween(long long moment, long long version) const;

    std::span<const Ledger> m_ledgers;
    const VersionLog& m_log;
};

} // namespace tolmtest
