#include "StoreSupport/FaultLoop.h"

#include "MepDatabase/DatasetPaths.h"
#include "StoreSupport/StoreFixture.h"
#include "Support/DebugWarnings.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace tolmtest {
namespace {

constexpr long kDiskStep = 512;

/// How many of the faults are tried: every one with 1.
long Stride(long otherwise) {
    const char* const text = std::getenv("TOLM_FAULT_STRIDE");
    return text == nullptr ? otherwise : std::max(1L, std::atol(text));
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

} // namespace

Facts DatasetFacts(const std::wstring& path) {
    Facts facts;
    AddFacts(path, "data/", facts);
    AddFacts(tolm::DatasetPaths::Of(path).status, "status/", facts);
    return facts;
}

FaultLoop::FaultLoop(const std::wstring& folder, std::wstring path, std::function<bool()> work)
    : m_path(std::move(path)), m_work(std::move(work)), m_start(folder), m_before(DatasetFacts(m_path)),
      m_files(folder), m_stride(Stride(1)) {
    EXPECT_TRUE(m_work()) << "without a fault";
    m_after = DatasetFacts(m_path);
    EXPECT_NE(m_before, m_after) << "the operation changes nothing";
}

void FaultLoop::MayStopAt(const std::function<void()>& make) {
    m_start.PutBack();
    make();
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
    const std::string failed = m_files.FailedPath();
    m_files.Rest();
    constexpr const char* names[] = {"once", "for good", "full disk"};
    const std::string where =
        std::string(names[static_cast<int>(fault)]) + ", " + std::to_string(number) + ", " + failed;
    TakeWords(where);
    Judge(said, where);
    if (!said)
        ExpectNextTrySucceeds(where);
    m_runs += met ? 1 : 0;
    return met;
}

void FaultLoop::Judge(bool said, const std::string& where) {
    const Facts facts = DatasetFacts(m_path);
    const bool statusFailed = where.find("_Status") != std::string::npos;
    if (statusFailed && (said || m_mayStay) && facts == WithStatusOf(m_after, m_before))
        return;
    if (said) {
        EXPECT_TRUE(Same(m_after, facts)) << where << ": said true";
        return;
    }
    if (std::ranges::find(m_between, facts) == m_between.end()) {
        EXPECT_TRUE(Same(m_before, facts)) << where << ": said false";
    }
}

void FaultLoop::ExpectNextTrySucceeds(const std::string& where) {
    const Facts left = DatasetFacts(m_path);
    EXPECT_TRUE(m_work()) << where << ": next try";
    TakeWords(where);
    const Facts facts = DatasetFacts(m_path);
    const bool stays = m_mayStay && facts == left && std::ranges::find(m_between, left) != m_between.end();
    EXPECT_TRUE(stays || Same(m_after, facts)) << where << ": next try";
}

void FaultLoop::TakeWords(const std::string& where) {
    for (const auto& warning : TakeDebugWarnings()) {
        const bool known = std::ranges::any_of(m_warnings, [&](const auto& text) { return warning.starts_with(text); });
        EXPECT_TRUE(known) << where << ": " << vorn::StringUtil::ToString(warning);
    }
    TakeNotifications();
    TakeLogLines();
}

} // namespace tolmtest
