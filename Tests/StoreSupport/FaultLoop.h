#pragma once

#include "StoreSupport/StoreContent.h"
#include "Support/FaultyFiles.h"
#include "Support/FolderContent.h"

#include <functional>
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
/// without a fault, must succeed where it said that it failed. Combined products and binary files are in no commit with
/// the data: they are new where the operation said true, but for those whose own file failed: of combined products the
/// operation says nothing, and a binary file that cannot be read may be a store and is left alone, with a warning.
class FaultLoop {
public:
    /// `work` is the operation; it returns what the operation does. The folder holds the dataset as it is before.
    FaultLoop(const std::wstring& folder, std::wstring path, std::function<bool()> work);

    /// A state that the operation passes through on disk by design, made by `make` out of the one before it.
    void MayStopAt(const std::function<void()>& make);
    /// The next try leaves such a state as it is; and where the status store cannot be removed in the end, it stays
    /// beside the new data, to be tried again.
    void MayStay() { m_mayStay = true; }
    /// The operation notes a change in a status store beside the data. Where that does not open, the change of the data
    /// stands, and nobody is told.
    void MayGoUnnoted() { m_mayGoUnnoted = true; }
    /// A warning that may tell of a fault, by its beginning.
    void MayWarnOf(const std::wstring& text) { m_warnings.push_back(text); }

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
    void TakeWords(const std::string& where);

    std::wstring m_path;
    std::function<bool()> m_work;
    FolderContent m_start;
    Facts m_before;
    Facts m_after;
    Facts m_companionsAfter;
    std::vector<Facts> m_between;
    std::vector<std::wstring> m_warnings{
        L"closeDatabase 失败",       L"createRec 失败",        L"saveRec 失败",
        L"openDatabase 失败",        L"beginTransaction 失败", L"云端下载的此条目没找到: ",
        L"本地修改的此条目没找到: ", L"删除单文件失败",        L"BinaryTable:下载文件失败"};
    FaultyFiles m_files;
    long m_stride;
    long m_runs = 0;
    std::string m_failedPath;
    std::string m_failedCall;
    bool m_mayStay = false;
    bool m_mayGoUnnoted = false;
};

} // namespace tolmtest
