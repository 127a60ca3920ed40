#include "StoreSupport/FaultLoop.h"

#include "MepDatabase/DatasetPaths.h"
#include "StoreSupport/StoreFixture.h"
#include "Support/DebugWarnings.h"
#include "Support/TriedPoints.h"
#include "Vorn/Files.h"
#include "Vorn/Notification.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <stdexcept>

namespace tolmtest {
namespace {

constexpr long kDiskStep = 512;

/// How many of the faults are tried: every one with 1.
long Stride(long otherwise) {
    return AskedFor("TOLM_FAULT_STRIDE", otherwise);
}

void AddFacts(const std::wstring& path, const std::string& prefix, Facts& facts) {
    if (!vorn::FileInfo(path).Exists())
        return;
    if (const auto verdict = SqlValue(path, "PRAGMA integrity_check"); verdict != "ok")
        throw std::runtime_error(prefix + verdict);
    if (vorn::FileInfo(path).Size() == 0) // as good as none; a journal that was left behind is played back by now
        return;
    for (const auto& [key, value] : StoreFacts(path))
        facts.emplace(prefix + key, value);
}

/// The data of one, the status of the other: a change whose status store would not open.
Facts WithStatusOf(const Facts& data, const Facts& status) {
    Facts facts;
    const auto isData = [](const auto& fact) { return fact.first.starts_with("data/"); };
    std::ranges::copy_if(data, std::inserter(facts, facts.end()), isData);
    std::ranges::copy_if(status, std::inserter(facts, facts.end()), std::not_fn(isData));
    return facts;
}

/// How the facts begin that a fault of this file may leave as they were; empty where it is none of theirs. A binary
/// file that cannot be read may be a store, and is left alone.
std::string WhatAFileOfItsOwnHolds(const std::string& path) {
    constexpr std::string_view kBinaryFolder = "/beside/files/";
    if (path.find("combined.db") != std::string::npos)
        return "combined/";
    const auto place = path.find(kBinaryFolder);
    return place == std::string::npos ? std::string() : "file/" + path.substr(place + kBinaryFolder.size());
}

bool IsSuccess(const Notification& notification) {
    return notification.type == static_cast<int>(vorn::NotificationTypes::Success);
}
bool IsFailure(const Notification& notification) {
    return notification.type == static_cast<int>(vorn::NotificationTypes::Failure);
}

} // namespace

Facts DatasetFacts(const std::wstring& path) {
    Facts facts;
    AddFacts(path, "data/", facts);
    AddFacts(tolm::DatasetPaths::Of(path).status, "status/", facts);
    return facts;
}

Facts CompanionFacts(const std::wstring& path) {
    const std::wstring folder = vorn::FileSystem::FolderOf(path);
    const std::wstring combined = folder + L"/combined.db";
    Facts facts;
    if (vorn::FileInfo(combined).Size() > 0)
        facts = CombinedProductFacts(combined);
    for (const auto& [key, value] : FileFacts(folder + L"/beside/files")) {
        if (!key.starts_with("file/.tolm-")) // what was to become a file when the power was cut
            facts.emplace(key, value);
    }
    return facts;
}

FaultLoop::FaultLoop(const std::wstring& folder, std::wstring path, std::function<bool()> work,
                     std::function<Sent()> takeSent)
    : m_path(std::move(path)), m_work(std::move(work)), m_takeSent(std::move(takeSent)), m_start(folder),
      m_before(DatasetFacts(m_path)), m_files(folder), m_stride(Stride(1)) {
    EXPECT_TRUE(m_work()) << "without a fault";
    m_heard = TakeNotifications();
    EXPECT_FALSE(std::ranges::any_of(m_heard, IsFailure)) << "without a fault";
    m_sent = m_takeSent();
    m_after = DatasetFacts(m_path);
    m_companionsAfter = CompanionFacts(m_path);
    EXPECT_NE(m_before, m_after) << "the operation changes nothing";
}

void FaultLoop::MayStopAt(const std::function<void()>& make) {
    m_start.PutBack();
    make();
    TakeNotifications();
    m_takeSent();
    m_between.push_back(DatasetFacts(m_path));
}

void FaultLoop::TryOneOf(long faults) {
    m_stride = Stride(faults);
}

void FaultLoop::Run() {
    for (const auto fault : {Fault::Once, Fault::ForGood, Fault::FullDisk})
        RunAll(fault);
    EXPECT_GT(m_runs * m_stride, 30) << "hardly a fault was met";
}

void FaultLoop::RunAll(Fault fault) {
    long number = fault == Fault::FullDisk ? 0 : 1;
    while (RunOne(fault, number) && !testing::Test::HasFailure())
        number += m_stride;
}

bool FaultLoop::RunOne(Fault fault, long number) {
    m_start.PutBack();
    if (fault == Fault::FullDisk)
        m_files.FillDiskAfter(number * kDiskStep);
    else
        m_files.FailAt(number, fault == Fault::Once ? FaultyFiles::Lasts::Once : FaultyFiles::Lasts::ForGood);
    const bool said = m_work();
    const bool met = m_files.HasFailed();
    m_failedPath = m_files.FailedPath();
    m_failedCall = m_files.FailedCall();
    m_files.Rest();
    constexpr const char* names[] = {"once", "for good", "full disk"};
    const std::string where = std::string(names[static_cast<int>(fault)]) + ", " + std::to_string(number) + ", " +
                              m_failedCall + " " + m_failedPath;
    JudgeWarnings(where);
    JudgeNotifications(said, where);
    TakeLogLines();
    Judge(said, where);
    if (!said)
        ExpectNextTrySucceeds(where);
    m_runs += met ? 1 : 0;
    return met;
}

void FaultLoop::Judge(bool said, const std::string& where) {
    const Facts facts = DatasetFacts(m_path);
    if (IsExcused(said, facts))
        return;
    if (said) {
        EXPECT_TRUE(Same(m_after, facts)) << where << ": said true";
        JudgeCompanions(where);
        return;
    }
    if (std::ranges::find(m_between, facts) == m_between.end()) {
        EXPECT_TRUE(Same(m_before, facts)) << where << ": said false";
    }
}

void FaultLoop::JudgeCompanions(const std::string& where) {
    Facts facts = CompanionFacts(m_path);
    Facts expected = m_companionsAfter;
    if (const auto left = WhatAFileOfItsOwnHolds(m_failedPath); !left.empty()) {
        for (Facts* each : {&facts, &expected})
            std::erase_if(*each, [&](const auto& fact) { return fact.first.starts_with(left); });
    }
    EXPECT_TRUE(Same(expected, facts)) << where << ": said true";
}

/// The data new, the status old: where the status store did not open, or could not be removed in the end.
bool FaultLoop::IsExcused(bool said, const Facts& facts) const {
    const bool mayBe = said ? m_mayGoUnnoted && StatusStayedShut() : m_mayStay;
    const bool statusFailed = m_failedPath.find("_Status") != std::string::npos;
    return mayBe && statusFailed && facts == WithStatusOf(m_after, m_before);
}

/// What fails behind the opening of the status store fails with the data.
bool FaultLoop::StatusStayedShut() const {
    constexpr const char* opening[] = {"open", "create", "read", "size", "lock", "access"};
    return std::ranges::find(opening, m_failedCall) != std::end(opening);
}

void FaultLoop::ExpectNextTrySucceeds(const std::string& where) {
    const Facts left = DatasetFacts(m_path);
    EXPECT_TRUE(m_work()) << where << ": next try";
    JudgeWarnings(where + ": next try");
    JudgeNextNotifications(where);
    TakeLogLines();
    const Facts facts = DatasetFacts(m_path);
    const bool stays = m_mayStay && facts == left && std::ranges::find(m_between, left) != m_between.end();
    EXPECT_TRUE(stays || Same(m_after, facts)) << where << ": next try";
    EXPECT_TRUE(Same(m_companionsAfter, CompanionFacts(m_path))) << where << ": next try";
}

void FaultLoop::JudgeWarnings(const std::string& where) const {
    for (const auto& warning : TakeDebugWarnings()) {
        const bool known = std::ranges::any_of(m_warnings, [&](const auto& text) { return warning.starts_with(text); });
        EXPECT_TRUE(known) << where << ": " << vorn::StringUtil::ToString(warning);
    }
}

void FaultLoop::JudgeNotifications(bool said, const std::string& where) {
    const auto heard = TakeNotifications();
    const Sent sent = m_takeSent();
    if (said) {
        EXPECT_EQ(m_heard, heard) << where << ": said true";
        return;
    }
    const bool wentOut = !sent.empty() && sent == m_sent;
    EXPECT_EQ(std::ranges::any_of(heard, IsSuccess), wentOut) << where << ": said false";
}

/// It may be another operation that is left to do, with a success of its own.
void FaultLoop::JudgeNextNotifications(const std::string& where) const {
    m_takeSent();
    const auto heard = TakeNotifications();
    EXPECT_FALSE(std::ranges::any_of(heard, IsFailure)) << where << ": next try";
}

} // namespace tolmtest
