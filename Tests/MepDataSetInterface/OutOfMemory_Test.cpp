#include "MepDataSetInterface/TableTestSupport.h"

#include "TolmDataSet/ITolmDataSetFactory.h"

#include <cstdlib>
#include <new>

namespace {

/// Allocations of this thread until one fails; negative when none does.
thread_local int t_untilFailure = -1;
/// The same for allocations of one size.
thread_local int t_untilMissing = -1;
thread_local std::size_t t_missingSize = 0;

bool FailsNow(std::size_t size) {
    return (size == t_missingSize && t_untilMissing >= 0 && t_untilMissing-- == 0) ||
           (t_untilFailure >= 0 && t_untilFailure-- == 0);
}

} // namespace

// Kept out of line: inlined, the pair looks to the compiler as if memory of new went to free.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const memory = FailsNow(size) ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return FailsNow(size) ? nullptr : std::malloc(size != 0 ? size : 1);
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

TEST(OutOfMemory, ADatasetWhosePathsCannotBeCopiedIsAnEmptyOwner) {
    const wstring path(100, L'x');
    const auto make = [&] { return ITolmDataSetFactory::Get()->CreateDataset(path, path, path, path); };
    for (int copy = 0; copy < 4; ++copy)
        EXPECT_FALSE(MakeWithFailureAt(copy, make)) << copy;
    EXPECT_TRUE(make());
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

class MethodsOutOfMemory : public StoreFixture {
protected:
    /// Reads again and again while one allocation of the size of this record fails, each in its turn: others may be
    /// of that size. True when none of them failed and yet nothing was read, or something was read all the same.
    template <class Record, class Read> bool ReadWithout(const Read& read) {
        t_missingSize = sizeof(Record);
        for (int number = 0;; ++number) {
            std::vector<Record> list;
            t_untilMissing = number;
            bool found = false;
            try {
                found = read(list);
            } catch (const std::bad_alloc&) { // it was an allocation of the store's
            }
            const bool wasMissing = t_untilMissing < 0;
            t_untilMissing = -1;
            if (!wasMissing)
                return !found || list.size() != 1;
            if (found || !list.empty())
                return true;
        }
    }
};

TEST_F(MethodsOutOfMemory, AMethodThatCannotBeMadeIsReportedAndPassedOver) {
    ASSERT_TRUE(util.addBalancingMethod(path, ddq, {}) && util.addInsulationSerie(path, ddq, {}) &&
                util.addSizingMethod(path, ddq, {}));
    Sql(path, "update BMD set DisciplineId = 2");
    const auto discipline = MEPDisciplineId::Plumbing;
    EXPECT_FALSE(ReadWithout<DataSetBalancingMethod>(
        [&](auto& list) { return util.readBalancingMethodList(path, ddq, discipline, list); }));
    EXPECT_FALSE(ReadWithout<DataSetInsulationSerie>([&](auto& list) {
        return util.readInsulationSerieList(path, ddq, discipline, TolmInsulationSerieType::Pipe, list);
    }));
    EXPECT_FALSE(ReadWithout<DataSetSizingMethod>(
        [&](auto& list) { return util.readSizingMethodList(path, ddq, TolmSizingMethodType::Pipe, list); }));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::readBalancingMethodList: ptempSerie为空",
                                                         L"MepQbaseUtil::readInsulationSerieList: ptempSerie为空",
                                                         L"MepQbaseUtil::readSizingMethodList: sizingMethod为空"}));
}

/// One allocation after the other fails while a record is deleted in a working copy.
TEST_F(MethodsOutOfMemory, AChangeThatCannotBeRecordedIsPutBackAllTheSame) {
    const wstring other = path + L".other";
    const wstring copy = path + L".copy";
    int unrecorded = 0;
    bool wasMissing = true;
    for (int number = 0; wasMissing; ++number) {
        CQbase qb;
        ASSERT_TRUE(qb.openDatabase(ddq, path, true) && qb.lockForUpdate());
        if (!qb.existRec("BMD", L"goes"))
            ASSERT_TRUE(qb.createRec("BMD", L"goes") && qb.saveRec());
        ASSERT_TRUE(qb.closeDatabase() && CQbase::copyStore(path, other));
        CQbaseWorkingCopies copies;
        ASSERT_TRUE(copies.make({path, copy}, {other, other + L".copy"}));
        ASSERT_TRUE(qb.openDatabase(ddq, copy, false) && qb.lockForUpdate());
        t_untilFailure = number;
        bool isDeleted = false;
        try {
            isDeleted = qb.deleteRec("BMD", L"goes");
        } catch (const std::bad_alloc&) { // it was not the recording
        }
        wasMissing = t_untilFailure < 0;
        t_untilFailure = -1;
        qb.closeDatabase();
        ASSERT_TRUE(copies.putBack());
        const char* const left = "select count(*) from BMD";
        EXPECT_EQ(Sql(path, left), Sql(copy, left)) << number;
        unrecorded += isDeleted && wasMissing ? 1 : 0;
    }
    EXPECT_GT(unrecorded, 0);
}

} // namespace
