#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/StoreFrame.h"
#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/MepQbaseUtilTestAccess.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"
#include "Support/FileSizeLimit.h"
#include "TolmDataSet/ITolmDataSetFactory.h"

#include <functional>
#include <stdexcept>

namespace {

using namespace tolm;
using namespace tolmtest;
using Access = MepQbaseUtilTestAccess;

class StoreOpening : public StoreFixture {};

TEST_F(StoreOpening, AnEmptyPathOrNoHandleIsFalseAndReportsNothing) {
    CQbase qb;
    EXPECT_FALSE(Access::OpenQbase(L"", ddq, &qb, true, true));
    EXPECT_FALSE(Access::OpenQbase(path, L"", &qb, true, true));
    EXPECT_FALSE(Access::OpenQbase(path, ddq, nullptr, true, true));
    EXPECT_FALSE(Exists(path));
}

TEST_F(StoreOpening, AMissingFileOpensOnlyWithCreate) {
    CQbase qb;
    EXPECT_FALSE(Access::OpenQbase(path, ddq, &qb, true, false));
    EXPECT_FALSE(Exists(path));
    EXPECT_TRUE(Access::OpenQbase(path, ddq, &qb, true, true));
    EXPECT_TRUE(Exists(path));
}

TEST_F(StoreOpening, ForUpdateTakesTheUpdateLock) {
    MakeStore();
    CQbase qb;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, true, false));
    EXPECT_TRUE(qb.createRec("MTS", L"m"));
}

TEST_F(StoreOpening, OtherwiseTheReadLockIsTaken) {
    MakeStore();
    CQbase qb;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &qb, false, false));
    EXPECT_FALSE(qb.createRec("MTS", L"m"));
    CQbase second;
    EXPECT_TRUE(Access::OpenQbase(path, ddq, &second, false, false));
}

TEST_F(StoreOpening, ALockThatIsNotToBeHadLeavesTheHandleClosed) {
    MakeStore();
    const LockTimeout atOnce(0);
    CQbase holder;
    ASSERT_TRUE(Access::OpenQbase(path, ddq, &holder, true, false));
    CQbase qb;
    EXPECT_FALSE(Access::OpenQbase(path, ddq, &qb, true, false));
    ASSERT_TRUE(holder.closeDatabase());
    EXPECT_TRUE(Access::OpenQbase(path, ddq, &qb, true, false));
}

TEST_F(StoreOpening, AFileThatIsNoStoreStaysAsItWas) {
    const std::string text = "no store at all";
    ASSERT_TRUE(vorn::FileUtility::SaveInBinaryMode(path, text.data(), text.size(), false));
    EXPECT_FALSE(util.WriteMaterial(path, ddq, Material(L"m", L"steel").get()));
    EXPECT_EQ(FileBytes(path), text);
}

/// One operation of the store, true when it could do its work.
struct Operation {
    const char* name;
    bool forUpdate;
    bool create;
    std::function<bool(MepQbaseUtil&, const wstring& path, const wstring& ddq)> run;
};

void PrintTo(const Operation& operation, std::ostream* out) {
    *out << operation.name;
}

bool WriteOne(MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
    return util.WriteMaterial(path, ddq, Material(L"m", L"steel").get());
}

const Operation kOperations[] = {
    {"ReadMaterialList", false, false,
     [](MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
         std::vector<MaterialPtr> list;
         return util.ReadMaterialList(path, ddq, Type::Pipe, Discipline::Plumbing, list);
     }},
    {"ReadMaterial", false, false,
     [](MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
         MaterialPtr material;
         return util.ReadMaterial(path, ddq, L"m1", material);
     }},
    {"ReadSizeModuleListByDiscipline", false, false,
     [](MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
         std::vector<SizeModulePtr> list;
         return util.ReadSizeModuleList(path, ddq, Type::Pipe, Discipline::Plumbing, list);
     }},
    {"ReadSizeModuleListByMaterial", false, false,
     [](MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
         SizeModulePtr module;
         return util.ReadSizeModuleList(path, ddq, Type::Pipe, L"m1", module);
     }},
    {"GetLocalVersion", false, false,
     [](MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
         bool changed = false;
         return util.GetLocalVersion(path, ddq, changed) == 7;
     }},
    {"GetLastUpdateTimePoint", false, false,
     [](MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
         return !util.GetLastUpdateTimePoint(path, ddq).empty();
     }},
    {"WriteMaterial", true, true, &WriteOne},
    {"WriteSizeModule", true, true,
     [](MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
         return util.WriteSizeModule(path, ddq, SizeModule(L"s", L"sizes").get());
     }},
    {"RecordLocalChange", true, true,
     [](MepQbaseUtil&, const wstring& path, const wstring& ddq) {
         // The status store of the path that it is given is the file under test.
         const wstring data = path.substr(0, path.rfind(L"_Status")) + L".db";
         return Access::RecordLocalChange(data, ddq, "MTS", L"m", 1, 1, 2);
     }},
    {"DeleteMaterialList", true, false,
     [](MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
         return util.DeleteMaterialList(path, ddq, {Material(L"m1", L"").get()});
     }},
    {"DeleteSizeModuleList", true, false,
     [](MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
         return util.DeleteSizeModuleList(path, ddq, {SizeModule(L"s1", L"").get()});
     }},
    {"IsTheSizeModuleReferred", true, false,
     [](MepQbaseUtil& util, const wstring& path, const wstring& ddq) {
         wstring name;
         return util.IsTheSizeModuleReferred(path, ddq, SizeModule(L"s1", L"").get(), name);
     }},
};

class EachOperation : public StoreFixture, public testing::WithParamInterface<Operation> {
protected:
    /// A store in which each operation finds what it looks for.
    void Fill() {
        auto module = SizeModule(L"s1", L"sizes");
        module->AddPipeSize({1.0F, 2.0F, 3.0F, 4.0F});
        module->SetMaterial(Material(L"m1", L"steel"));
        ASSERT_TRUE(util.WriteSizeModule(file, ddq, module.get()));
        ASSERT_TRUE(util.SetLocalVersion(file, ddq, 7));
        ASSERT_FALSE(util.SetLastUpdateTimePoint(file, ddq).empty());
        CQbase qb;
        ASSERT_TRUE(qb.openDatabase(ddq, file, false) && qb.createRec("SMS", L"series"));
        qb.setShort(1104, 1);
        qb.setShort(1181, 2);
        qb.setWsz(1506, L"s1", -1);
        ASSERT_TRUE(qb.saveRec() && qb.closeDatabase());
    }
    bool Run() { return GetParam().run(util, file, ddq); }

    const wstring file = folder.File(L"set_Status.db");
};

TEST_P(EachOperation, WorksOnAStore) {
    Fill();
    EXPECT_TRUE(Run());
}

TEST_P(EachOperation, BringsAMissingFileIntoBeingOnlyWhereItWrites) {
    Run();
    EXPECT_EQ(Exists(file), GetParam().create);
}

TEST_P(EachOperation, NeedsTheUpdateLockAsTheTableSays) {
    Fill();
    const LockTimeout atOnce(0);
    CQbase reader;
    ASSERT_TRUE(reader.openDatabase(ddq, file, false) && reader.lockForRead());
    EXPECT_EQ(Run(), !GetParam().forUpdate);
}

TEST_P(EachOperation, FailsQuietlyWhereAnotherHoldsTheUpdateLock) {
    Fill();
    CQbase writer;
    ASSERT_TRUE(writer.openDatabase(ddq, file, false) && writer.lockForUpdate());
    EXPECT_FALSE(Run());
}

TEST_P(EachOperation, ReportsThatNoHandleCanBeMade) {
    Fill();
    const NoStoreHandles none;
    EXPECT_FALSE(Run());
    for (const auto& message : TakeDebugWarnings())
        EXPECT_EQ(message, L"qb为空");
}

TEST_P(EachOperation, LeavesNothingOpen) {
    Fill();
    Run();
    const LockTimeout atOnce(0);
    CQbase qb;
    EXPECT_TRUE(qb.openDatabase(ddq, file, false) && qb.lockForUpdate());
}

INSTANTIATE_TEST_SUITE_P(Store, EachOperation, testing::ValuesIn(kOperations),
                         [](const auto& test) { return std::string(test.param.name); });

class StoreFrameTest : public StoreFixture {};

TEST_F(StoreFrameTest, TheFaultIsReportedInTheNameOfTheOperation) {
    const NoStoreHandles none;
    MaterialPtr material;
    EXPECT_FALSE(util.ReadMaterial(path, ddq, L"m", material));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReadMaterial: qb为空"}));
}

TEST_F(StoreFrameTest, WithoutAHandleNothingOpens) {
    const NoStoreHandles none;
    StoreFrame store(TOLM_CALL_SITE);
    EXPECT_FALSE(store.Open(path, ddq, StoreAccess::Write));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"qb为空"}));
    EXPECT_FALSE(Exists(path));
}

TEST_F(StoreFrameTest, AnExceptionUnderWayClosesTheStoreAndKeepsWhatWasSaved) {
    const auto work = [this] {
        StoreFrame store(TOLM_CALL_SITE);
        ASSERT_TRUE(store.Open(path, ddq, StoreAccess::Write));
        ASSERT_TRUE(store->createRec("MTS", L"m") && store->saveRec());
        throw std::runtime_error("in between");
    };
    EXPECT_THROW(work(), std::runtime_error);
    StoreFrame store(TOLM_CALL_SITE);
    ASSERT_TRUE(store.Open(path, ddq, StoreAccess::Read));
    EXPECT_TRUE(store->existRec("MTS", L"m"));
}

TEST_F(StoreFrameTest, AChangeThatIsNotOnDiskIsReportedAndFalse) {
    ASSERT_TRUE(util.WriteMaterial(path, ddq, Material(L"m", L"steel").get()));
    {
        const FileSizeLimit full(0);
        EXPECT_FALSE(util.WriteMaterial(path, ddq, Material(L"m", L"copper").get()));
    }
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::WriteMaterial: closeDatabase 失败"}));
    MaterialPtr material;
    ASSERT_TRUE(util.ReadMaterial(path, ddq, L"m", material));
    EXPECT_EQ(material->GetName(), L"steel");
}

TEST_F(StoreFrameTest, ADeletionThatIsNotOnDiskIsReportedAndFalse) {
    ASSERT_TRUE(util.WriteMaterial(path, ddq, Material(L"m", L"steel").get()));
    {
        const FileSizeLimit full(0);
        EXPECT_FALSE(util.DeleteMaterialList(path, ddq, {Material(L"m", L"").get()}));
    }
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::DeleteMaterialList: closeDatabase 失败"}));
    MaterialPtr material;
    ASSERT_TRUE(util.ReadMaterial(path, ddq, L"m", material));
    EXPECT_TRUE(material);
}

TEST_F(StoreFrameTest, TheSingletonIsOneObject) {
    EXPECT_EQ(MepQbaseUtil::GetInstance(), &util);
}

} // namespace
