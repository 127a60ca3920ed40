#include "Support/FileFaults.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace tolmtest {

FileFaults::Unsynced FileFaults::UnsyncedOf(const std::string& name) {
    if (name == "kept")
        return Unsynced::Kept;
    return name == "torn" ? Unsynced::Torn : Unsynced::Dropped;
}

bool FileFaults::Watches(const char* path) const {
    return !m_isOut && path != nullptr && std::strncmp(path, m_folder.c_str(), m_folder.size()) == 0;
}

void FileFaults::Rest() {
    m_calls = m_changes = 0;
    m_functions.clear();
    m_failAt = m_cutAt = 0;
    m_diskLeft = -1;
    m_refusesChanges = false;
    m_readOnlyPart.clear();
    m_hasFailed = false;
    m_failedPath.clear();
    m_failedCall.clear();
    m_unsynced.Forget();
}

void FileFaults::FailAt(long number, Lasts lasts) {
    Rest();
    m_failAt = number;
    m_lasts = lasts;
}

void FileFaults::FillDiskAfter(std::int64_t bytes) {
    Rest();
    m_diskLeft = bytes;
}

void FileFaults::RefuseChanges() {
    Rest();
    m_refusesChanges = true;
}

void FileFaults::OpenForReadingOnly(std::string part) {
    Rest();
    m_readOnlyPart = std::move(part);
}

void FileFaults::CutPowerAt(long number, Unsynced unsynced, std::uint64_t seed) {
    Rest();
    m_cutAt = number;
    m_kept = unsynced;
    m_seed = seed;
}

void FileFaults::CutPower() {
    m_isOut = true; // what the loss does to files is nobody's call
    if (m_kept != Unsynced::Kept)
        m_unsynced.Lose(m_kept == Unsynced::Torn, m_seed);
    std::raise(SIGKILL);
    std::abort();
}

bool FileFaults::Change(const char* path, const char* call) {
    if (++m_changes == m_cutAt)
        CutPower();
    return Count(path, call) || (m_refusesChanges && NoteFailure(path, call));
}

void FileFaults::ChangePastSqlite(const char* path, const char* call, const char* function) {
    m_functions.insert(function);
    Change(path, call);
}

int FileFaults::Room(const char* path, int bytes) {
    if (m_diskLeft < 0)
        return bytes;
    const int room = static_cast<int>(std::min<std::int64_t>(m_diskLeft, bytes));
    m_diskLeft -= room;
    if (room < bytes) {
        m_diskLeft = 0;
        NoteFailure(path, "write");
    }
    return room;
}

bool FileFaults::OpensForReadingOnly(const char* path) {
    return !m_readOnlyPart.empty() && std::strstr(path, m_readOnlyPart.c_str()) != nullptr;
}

bool FileFaults::Count(const char* path, const char* call) {
    ++m_calls;
    const bool fails = m_failAt != 0 && (m_calls == m_failAt || (m_lasts == Lasts::ForGood && m_calls > m_failAt));
    return fails && NoteFailure(path, call);
}

bool FileFaults::NoteFailure(const char* path, const char* call) {
    if (!m_hasFailed) {
        m_failedPath = path;
        m_failedCall = call;
    }
    return m_hasFailed = true;
}

} // namespace tolmtest
