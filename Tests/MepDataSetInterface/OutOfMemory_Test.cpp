#include "MepDataSetInterface/TableTestSupport.h"

#include <cstdlib>
#include <new>

namespace {

/// Allocations of this thread until one fails; negative when none does.
thread_local int t_untilFailure = -1;

bool FailsNow() {
    return t_untilFailure >= 0 && t_untilFailure-- == 0;
}

} // namespace

// Kept out of line: inlined, the pair looks to the compiler as if memory of new went to free.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const memory = FailsNow() ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

using namespace tolm;
using namespace tolmtest;

/// Makes an object while one allocation, counted from 0, fails.
template <class Make> auto MakeWithFailureAt(int allocation, const Make& make) {
    t_untilFailure = allocation;
    auto made = make();
    t_untilFailure = -1;
    return made;
}

vorn::OwnerPtr<ITolmDataset> MakeDataset() {
    return TolmDataset::Create({}, {}, {}, {});
}

TEST(OutOfMemory, ADatasetThatCannotBeMadeIsAnEmptyOwner) {
    EXPECT_FALSE(MakeWithFailureAt(0, MakeDataset));
}

TEST(OutOfMemory, ATableThatCannotBeMadeIsMissingAndReportedByWhoNeedsIt) {
    const wchar_t* const inOrderOfMaking[] = {L"m_ConnectorData为空！",        L"m_sizeData为空！",
                                              L"m_materialData为空！",         L"m_systemData为空！",
                                              L"m_MEPmaterialSerieData为空！", L"m_circuitTemplateData为空！"};
    int allocation = 1;
    for (const wchar_t* words : inOrderOfMaking) {
        const auto dataset = MakeWithFailureAt(allocation++, MakeDataset);
        ASSERT_TRUE(dataset);
        dataset->ResetDataTables();
        EXPECT_EQ(TakeDebugWarnings(), (Warnings{words}));
    }
}

TEST(OutOfMemory, ATableOrRecordThatCannotBeMadeIsAnEmptyOwner) {
    EXPECT_FALSE(MakeWithFailureAt(0, &MaterialData::Create));
    EXPECT_FALSE(MakeWithFailureAt(0, &SizeModuleData::Create));
    EXPECT_FALSE(MakeWithFailureAt(0, &ConnectorData::Create));
    EXPECT_FALSE(MakeWithFailureAt(0, &SystemTypeData::Create));
    EXPECT_FALSE(MakeWithFailureAt(0, &MEPMaterialSerieData::Create));
    EXPECT_FALSE(MakeWithFailureAt(0, &CircuitTemplateData::Create));
    EXPECT_FALSE(MakeWithFailureAt(0, &IProjectSettingMaterial::Create));
    EXPECT_FALSE(MakeWithFailureAt(1, &IProjectSettingMaterial::Create));
}

} // namespace
