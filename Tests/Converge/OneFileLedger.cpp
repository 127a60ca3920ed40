#include "Converge/OneFileLedger.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace tolmtest {
namespace {

bool IsGone(const std::vector<LoggedState>& states) {
    return states.empty() || states.back().gone < kNever;
}

bool HasMark(const std::vector<LoggedState>& states, long mark) {
    return std::ranges::find(states, mark, &LoggedState::Mark) != states.end();
}

bool IsFromOutside(const LoggedState& state) {
    return state.Mark() >= kOutsideMarks;
}

bool IsInCloud(const Attempt& edit, const std::vector<LoggedState>& states) {
    return edit.what == "put" ? HasMark(states, edit.mark) : IsGone(states);
}

/// One that was under way when its process was killed counts where it can be seen.
bool IsFollowed(const std::vector<Attempt>& attempts, std::size_t place, const std::vector<LoggedState>& states) {
    const auto later = std::next(attempts.begin(), static_cast<std::ptrdiff_t>(place) + 1);
    return std::any_of(later, attempts.end(), [&](const Attempt& next) {
        return next.id == attempts[place].id && next.end != Attempt::End::Refused &&
               (next.end == Attempt::End::Done || IsInCloud(next, states));
    });
}

} // namespace

void Ledger::Take(const std::string& line) {
    std::istringstream words(line);
    std::string what;
    words >> what;
    if (what == "put" || what == "del") {
        Attempt attempt;
        attempt.what = what;
        words >> attempt.id >> attempt.mark >> attempt.from;
        next = attempt.mark + 1;
        attempts.push_back(attempt);
    } else if (what == "ok" || what == "no") {
        TakeEnd(what, words);
    } else if (what == "send" || what == "merge") {
        Sending sending;
        sending.merges = what == "merge";
        sending.token = m_token;
        words >> sending.began >> sending.from;
        Close(sending.from);
        sendings.push_back(sending);
    } else if (what == "sync") {
        TakeSync(words);
    } else {
        warnings.push_back(line);
    }
}

void Ledger::TakeEnd(const std::string& result, std::istream& words) {
    long took = 0;
    Attempt& attempt = attempts.back();
    words >> took >> attempt.ended;
    longestEdit = std::max(longestEdit, took);
    attempt.end = result == "ok" ? Attempt::End::Done : Attempt::End::Refused;
}

/// Of a synchronisation that was not done the version may be one of before.
void Ledger::TakeSync(std::istream& words) {
    std::string result;
    bool sent = false;
    bool done = false;
    long long version = 0;
    long took = 0;
    words >> result >> sent >> done >> version >> took;
    longestSync = std::max(longestSync, took);
    ++syncs[result + (done ? " done" : " not done")];
    if (sent)
        sendings.back().done = done;
    if (done)
        Close(version);
}

/// The cloud told a version, which is no older than what was sent before under the same token.
void Ledger::Close(long long version) {
    if (sendings.empty() || !sendings.back().open || sendings.back().token != m_token)
        return;
    sendings.back().to = version;
    sendings.back().open = false;
}

void Ledger::TakeLastVersions(const std::function<long long(const std::string&)>& versionOf) {
    for (Sending& sending : sendings) {
        if (sending.open)
            sending.to = versionOf(sending.token);
    }
}

bool Ledger::Merges(long long version) const {
    return std::ranges::any_of(sendings, [&](const Sending& sending) {
        return sending.merges && (sending.done || sending.open) && sending.from < version && version <= sending.to;
    });
}

const char* NameOf(EditFate fate) {
    constexpr const char* kNames[] = {"landed",
                                      "followed",
                                      "overridden from outside",
                                      "overridden by the file's own upload",
                                      "made on a record that had come back",
                                      "lost"};
    return kNames[static_cast<std::size_t>(fate)];
}

EditFate EditJudge::FateOf(const Ledger& ledger, std::size_t place) const {
    const Attempt& edit = ledger.attempts[place];
    const auto& states = StatesOf(edit.id);
    if (IsInCloud(edit, states))
        return EditFate::Landed;
    if (IsFollowed(ledger.attempts, place, states))
        return EditFate::Followed;
    if (GivesWayToAnyBirth(edit, false))
        return EditFate::OverriddenFromOutside;
    if (GivesWayToAnyBirth(edit, true) || GivesWayToARemoval(edit))
        return EditFate::OverriddenByOwnUpload;
    return IsOnARecordThatHadComeBack(ledger, place) ? EditFate::OnARecordThatHadComeBack : EditFate::Lost;
}

bool EditJudge::IsOnARecordThatHadComeBack(const Ledger& ledger, std::size_t place) const {
    const Attempt& edit = ledger.attempts[place];
    const auto end = std::next(ledger.attempts.begin(), static_cast<std::ptrdiff_t>(place));
    return IsGone(StatesOf(edit.id)) && std::any_of(ledger.attempts.begin(), end, [&](const Attempt& before) {
               return before.what == "del" && before.id == edit.id && before.end != Attempt::End::Refused &&
                      (GivesWayToAnyBirth(before, true) || GivesWayToAnyBirth(before, false));
           });
}

bool EditJudge::CameBack(const std::string& id) const {
    return IsGone(StatesOf(id)) && std::ranges::any_of(m_ledgers, [&](const Ledger& ledger) {
               return std::ranges::any_of(ledger.attempts, [&](const Attempt& edit) {
                   return edit.what == "del" && edit.id == id && edit.end != Attempt::End::Refused &&
                          (GivesWayToAnyBirth(edit, true) || GivesWayToAnyBirth(edit, false));
               });
           });
}

const std::vector<LoggedState>& EditJudge::StatesOf(const std::string& id) const {
    return m_log.Of(SliceOf("pipe materials"), id);
}

bool EditJudge::GivesWay(const Attempt& edit, long long version, bool isOwn) const {
    return version > edit.from && !WasEverythingSentBetween(edit.ended, version) &&
           (!isOwn || WasSentBefore(edit.ended, version));
}

bool EditJudge::GivesWayToAnyBirth(const Attempt& edit, bool isOwn) const {
    return std::ranges::any_of(StatesOf(edit.id), [&](const LoggedState& state) {
        return IsFromOutside(state) != isOwn && GivesWay(edit, state.born, isOwn);
    });
}

/// Nobody outside removes anything.
bool EditJudge::GivesWayToARemoval(const Attempt& edit) const {
    const auto& states = StatesOf(edit.id);
    for (std::size_t i = 0; i < states.size(); ++i) {
        const bool isReplaced = i + 1 < states.size() && states[i + 1].born == states[i].gone;
        if (!isReplaced && states[i].gone < kNever && GivesWay(edit, states[i].gone, true))
            return true;
    }
    return false;
}

bool EditJudge::WasSentBefore(long long moment, long long version) const {
    return std::ranges::any_of(m_ledgers, [&](const Ledger& ledger) {
        return std::ranges::any_of(ledger.sendings, [&](const Sending& sending) {
            return sending.began < moment && sending.MayHaveMade(version);
        });
    });
}

bool EditJudge::WasEverythingSentBetween(long long moment, long long version) const {
    return std::ranges::any_of(m_ledgers, [&](const Ledger& ledger) {
        return std::ranges::any_of(ledger.sendings, [&](const Sending& sending) {
            return sending.done && sending.began > moment && sending.to < version;
        });
    });
}

} // namespace tolmtest
