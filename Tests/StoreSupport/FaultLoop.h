#pragma once

#include "StoreSupport/StoreContent.h"
#include "Support/DebugWarnings.h"
#include "Support/FaultyFiles.h"
#include "Support/FolderContent.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace tolmtest {

/// Facts of a dataset file and of the status store beside it, "data/..." and "status/..."; none of a file that is not
/// there. A file that fails its integrity check throws.
Facts DatasetFacts(const std::wstring& path);
/// Facts of what a refresh puts beside a dataset file: combined products ("combined.db") and binary files (the folder
/// "beside/files").
Facts CompanionFacts(const std::wstring& path);

/// Tries one operation on a dataset with a fault at each of its file calls in turn, until a run meets none: once for a
/// single failing call, once for one after which all calls fail, and once for a disk that fills up at each byte count
/// that matters. After each the operation must have told the truth, the dataset must be old or new, and the next try,
/// without a fault, must succeed where it said that it failed. The truth is told to the user too: where the operation
/// said true, the user heard what is heard without a fault; where it said false, of no success, save that of an upload
/// which went out whole before something failed behind it, and then of that. Combined products and binary files are in
/// no commit with the data: they are new where the operation said true, but for those whose own file failed: of
/// combined products the operation says nothing, and a binary file that cannot be read may be a store and is left
/// alone, with a warning.
class FaultLoop {
public:
    /// What went to the service, in order.
    using Sent = std::vector<std::string>;

    /// `work` is the operation; it returns what the operation does. `takeSent` tells which local changes went to the
    /// service since it was asked last. The folder holds the dataset as it is before.
    FaultLoop(const std::wstring& folder, std::wstring path, std::function<bool()> work,
              std::function<Sent()> takeSent);

    /// A state that the operation passes through on disk by design, made by `make` out of the one before it.
    void MayStopAt(const std::function<void()>& make);
    /// The next try leaves such a state as it is; and where the status store cannot be removed in the end, it stays
    /// beside the new data, to be tried again.
    void MayStay() { m_mayStay = true; }
    /// The operation notes a change in a status store beside the data. Where that does not open, the change of the data
    /// stands, and nobody is told.
    void MayGoUnnoted() { m_mayGoUnnoted = true; }
    /// Warnings that may tell of a fault, by their beginnings; no other may.
    void MayWarnOf(std::span<const wchar_t* const> texts) {
        m_warnings.insert(m_warnings.end(), texts.begin(), texts.end());
    }

    /// Tries one of so many faults only, unless TOLM_FAULT_STRIDE says otherwise: for an operation of many file calls.
    void TryOneOf(long faults);

    void Run();
    long Runs() const { return m_runs; }

private:
    enum class Fault { Once, ForGood, FullDisk };
    void RunAll(Fault fault);
    bool RunOne(Fault fault, long number);
    void Judge(bool said, const std::string& where);
    void JudgeCompanions(const std::string& where);
    bool IsExcused(bool said, const Facts& facts) const;
    bool StatusStayedShut() const;
    void ExpectNextTrySucceeds(const std::string& where);
    void JudgeWarnings(const std::string& where) const;
    void JudgeNotifications(bool said, const std::string& where);
    void JudgeNextNotifications(const std::string& where) const;

    std::wstring m_path;
    std::function<bool()> m_work;
    std::function<Sent()> m_takeSent;
    FolderContent m_start;
    Facts m_before;
    Facts m_after;
    Facts m_companionsAfter;
    std::vector<Facts> m_between;
    std::vector<Notification> m_heard; ///< without a fault
    Sent m_sent;
    std::vector<std::wstring> m_warnings;
    FaultyFiles m_files;
    long m_stride;
    long m_runs = 0;
    std::string m_failedPath;
    std::string m_failedCall;
    bool m_mayStay = false;
    bool m_mayGoUnnoted = false;
};

} // namespace tolmtest
