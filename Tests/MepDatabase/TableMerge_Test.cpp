#include "MepDatabase/TableMerge.h"
#include "StoreSupport/TableMergeFixture.h"

#include <algorithm>

namespace tolmtest {
namespace {

namespace schema = tolm::schema;
using IdMap = std::map<wstring, Texts>;

const MergedKind& Kind(const std::string& name) {
    return *std::ranges::find_if(kMergedKinds, [&](const MergedKind& kind) { return kind.name == name; });
}

class TableMerge : public TableMergeFixture {
protected:
    /// A record whose local change the cloud's wins over, in a table where others stay.
    void MakeConflict(const MergedKind& kind) {
        Stands(kind, L"lost", L"local");
        Notes(kind, L"lost", 2);
        CloudModifies(kind, L"lost", L"cloud");
    }

    const MergedKind systemType = Kind("SystemType");
    const MergedKind serie = Kind("Serie");
    const MergedKind pipeSizes = Kind("PipeSizes");
    const MergedKind conduit = Kind("Conduit");
    const MergedKind group = Kind("Group");
    const MergedKind duct = Kind("DuctSizes");
    /// Materials of the plumbing pipes, whose table holds their sizes too.
    const MergedKind pipeMaterial = {"",
                                     "MTS",
                                     L"MaterialSeries",
                                     "ConfigTree",
                                     1,
                                     2,
                                     "{'ID':'%ID','groupName':'MaterialSeries','parentID':'','text':'%NAME'}",
                                     "{'ID':'%ID','groupName':'MaterialSeries','parentID':''}"};
    const IdMap none{};
    const IdMap some{{L"MaterialSeries", {L"x"}}, {L"electricLinePipe", {L"x"}}};
};

// --- what is missing -----------------------------------------------------------------------------------------------

TEST_F(TableMerge, OneTableNeedsStoreClassAndStatusStoreInThisOrder) {
    const auto merge = [&](CQbase* data, const char* classCode, CQbase* status) {
        return util.MergeOneTableData(add, del, data, status, classCode, L"PipeType", 1, 2);
    };
    EXPECT_FALSE(merge(nullptr, nullptr, nullptr));
    EXPECT_FALSE(merge(&qb, nullptr, nullptr));
    EXPECT_FALSE(merge(&qb, "SMS", nullptr));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::MergeOneTableData: qb 为空",
                                                         L"MepQbaseUtil::MergeOneTableData: qpdClassId 为空",
                                                         L"MepQbaseUtil::MergeOneTableData: qb_statusQbase为空"}));
}

TEST_F(TableMerge, GroupsNeedAStatusStore) {
    EXPECT_FALSE(util.MergeSizeTable(add, del, &qb, nullptr, L"cableTray", 3, 3, "PSI", some, none, none));
    EXPECT_FALSE(util.MergePipeSizeTable(add, del, &qb, nullptr, L"MaterialSeries", 2, some, none, none));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::MergeSizeTable: qb_statusQbase为空",
                                                         L"MepQbaseUtil::MergePipeSizeTable: qb_statusQbase为空"}));
}

TEST_F(TableMerge, WithoutADisciplineTheLocalSideCannotBeRead) {
    CloudAdds(serie, L"x", L"n");
    EXPECT_FALSE(util.MergeOneTableData(add, del, &qb, &statusQb, "SMS", L"PipeType", 1, 0));
    EXPECT_FALSE(util.MergeSizeTable(add, del, &qb, &statusQb, L"electricLinePipe", 4, 0, "PSI", some, none, none));
    EXPECT_FALSE(util.MergePipeSizeTable(add, del, &qb, &statusQb, L"MaterialSeries", 0, some, none, none));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::GetLocalChangedIdList: disicplineType 非法",
                        L"MepQbaseUtil::MergeOneTableData: bGetLocalIdListSucc 为false",
                        L"MepQbaseUtil::GetLocalChangedIdList: disicplineType 非法",
                        L"MepQbaseUtil::MergeSizeTable: bGetSizeLocalIdListSucc 为false",
                        L"MepQbaseUtil::GetLocalChangedIdList: disicplineType 非法",
                        L"MepQbaseUtil::MergePipeSizeTable: bGetSizeLocalIdListSucc 为false"}));
    EXPECT_EQ(NameOf(serie, L"x"), L"gone");
}

TEST_F(TableMerge, WithoutADataStoreNothingIsTaken) {
    CloudAdds(conduit, L"x", L"n");
    EXPECT_TRUE(util.MergeSizeTable(add, del, nullptr, &statusQb, conduit.key, 4, 3, "PSI", some, none, none));
    EXPECT_TRUE(util.MergePipeSizeTable(add, del, nullptr, &statusQb, pipeSizes.key, 2, some, none, none));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"DownloadSizeTableData: qb为空", L"DownloadPipeSizeTableData: qb为空"}));
}

// --- what is not touched -------------------------------------------------------------------------------------------

TEST_F(TableMerge, ATableThatTheCloudDidNotChangeKeepsItsLocalChanges) {
    for (const MergedKind& kind : {systemType, serie, pipeSizes, conduit, group}) {
        Stands(kind, wstring(kind.key), L"n");
        Notes(kind, wstring(kind.key), 2);
    }
    const auto before = TableMergeFixture::Notes();
    for (const MergedKind& kind : {systemType, serie, pipeSizes, conduit, group})
        EXPECT_TRUE(Merge(kind)) << kind.name;
    EXPECT_EQ(TableMergeFixture::Notes(), before);
}

TEST_F(TableMerge, AGroupWithNothingUnderItsKeyIsPassedOverWhateverOtherGroupsHave) {
    CloudModifies(conduit, L"x", L"cloud");
    Stands(group, L"x", L"local");
    Notes(group, L"x", 2);
    EXPECT_TRUE(Merge(group));
    EXPECT_EQ(NameOf(group, L"x"), L"local");
    EXPECT_EQ(NameOf(conduit, L"x"), L"gone");
}

TEST_F(TableMerge, AnEmptyListUnderTheKeyIsNothing) {
    const IdMap empty{{L"electricLinePipe", {}}, {L"MaterialSeries", {}}};
    CloudAdds(conduit, L"x", L"n");
    EXPECT_TRUE(util.MergeSizeTable(add, del, &qb, &statusQb, conduit.key, 4, 3, "PSI", empty, empty, empty));
    EXPECT_TRUE(util.MergePipeSizeTable(add, del, &qb, &statusQb, pipeSizes.key, 2, empty, empty, empty));
    EXPECT_EQ(NameOf(conduit, L"x"), L"gone");
}

TEST_F(TableMerge, LocalChangesToOtherRecordsStayForTheUpload) {
    MakeConflict(serie);
    Stands(serie, L"kept", L"kept");
    Notes(serie, L"kept", 2);
    Notes(serie, L"removed", 3);
    EXPECT_TRUE(Merge(serie));
    EXPECT_EQ(TableMergeFixture::Notes(), (std::vector<std::string>{"SMS kept 2", "SMS removed 3"}));
    EXPECT_EQ(NameOf(serie, L"kept"), L"kept");
}

TEST_F(TableMerge, LocalChangesOfAnotherDisciplineOrTypeLeaveTheTableToBeTakenWhole) {
    CloudAdds(group, L"new", L"Steel");
    CloudDeletes(group, L"gone");
    MakeRecord("MSG", L"hvac", L"Steel", 1, 1);
    NotesAt("MSG", L"hvac", 1, 1, 1);
    NotesAt("MSG", L"gone", 2, 2, 2);
    EXPECT_TRUE(Merge(group));
    EXPECT_EQ(NameOf(group, L"hvac"), L"Steel") << "no names were checked";
    EXPECT_EQ(TableMergeFixture::Notes(), (std::vector<std::string>{"MSG hvac 1", "MSG gone 2"}));
}

TEST_F(TableMerge, ElectricalSystemTypesAreNotedUnderAnotherTypeThanTheTablesAndMeetNoConflict) {
    const MergedKind electrical{"",
                                "SYS",
                                L"ElectricalSystemType",
                                "ElectricalSystemType",
                                5,
                                3,
                                "{'ID':'%ID','systemType':'%NAME','code':'','description':'','systemCategory':1}",
                                "{'ID':'%ID'}"};
    MakeRecord("SYS", L"e", L"local", 6, 3);
    NotesAt("SYS", L"e", 2, 6, 3);
    MakeRecord("SYS", L"f", L"cloud", 6, 3);
    NotesAt("SYS", L"f", 1, 6, 3);
    CloudModifies(electrical, L"e", L"cloud");
    EXPECT_TRUE(Merge(electrical));
    EXPECT_EQ(NameOf(electrical, L"e"), L"cloud");
    EXPECT_EQ(NameOf(electrical, L"f"), L"cloud") << "not renamed";
    EXPECT_EQ(TableMergeFixture::Notes(), (std::vector<std::string>{"SYS e 2", "SYS f 1"}));
}

// --- names ---------------------------------------------------------------------------------------------------------

class TableMergeOfKind : public TableMerge, public testing::WithParamInterface<MergedKind> {};

TEST_P(TableMergeOfKind, ALocalRecordWithTheNameOfACloudAdditionKeepsItsIdAndGetsANewName) {
    Stands(GetParam(), L"mine", L"Steel");
    Notes(GetParam(), L"mine", 1);
    CloudAdds(GetParam(), L"theirs", L"Steel");
    EXPECT_TRUE(Merge(GetParam()));
    EXPECT_EQ(NameOf(GetParam(), L"theirs"), L"Steel");
    EXPECT_EQ(NameOf(GetParam(), L"mine"), L"Steel(1)");
    EXPECT_EQ(StatusOf(GetParam(), L"mine"), 1);
}

TEST_P(TableMergeOfKind, AConflictAndARenamingMeetInOneMerge) {
    MakeConflict(GetParam());
    Stands(GetParam(), L"edited", L"cloud");
    Notes(GetParam(), L"edited", 2);
    EXPECT_TRUE(Merge(GetParam()));
    EXPECT_EQ(NameOf(GetParam(), L"lost"), L"cloud");
    EXPECT_EQ(StatusOf(GetParam(), L"lost"), 0);
    EXPECT_EQ(NameOf(GetParam(), L"edited"), L"cloud(1)");
    EXPECT_EQ(StatusOf(GetParam(), L"edited"), 2);
}

TEST_P(TableMergeOfKind, AnEditThatLostIsNotRenamed) {
    MakeConflict(GetParam());
    CloudAdds(GetParam(), L"twin", L"twin");
    CloudModifies(GetParam(), L"lost2", L"Steel");
    Stands(GetParam(), L"lost2", L"twin");
    Notes(GetParam(), L"lost2", 2);
    EXPECT_TRUE(Merge(GetParam()));
    EXPECT_EQ(NameOf(GetParam(), L"lost2"), L"Steel");
    EXPECT_EQ(NameOf(GetParam(), L"twin"), L"twin");
}

INSTANTIATE_TEST_SUITE_P(EachKind, TableMergeOfKind, testing::ValuesIn(kMergedKinds),
                         [](const auto& kind) { return std::string(kind.param.name); });

TEST_F(TableMerge, AnIdListedTwiceForgetsItsChangeOnce) {
    MakeConflict(serie);
    CloudModifies(serie, L"lost", L"cloud again");
    Notes(serie, L"other", 3);
    EXPECT_TRUE(Merge(serie));
    EXPECT_EQ(NameOf(serie, L"lost"), L"cloud again");
    EXPECT_EQ(TableMergeFixture::Notes(), std::vector<std::string>{"SMS other 3"});
}

// --- pipes: two classes under one key ------------------------------------------------------------------------------

TEST_F(TableMerge, MaterialsAndSizeTablesOfAGroupMeetTheirConflictsTogether) {
    MakeConflict(pipeSizes);
    Stands(pipeMaterial, L"m", L"local");
    Notes(pipeMaterial, L"m", 3);
    CloudModifies(pipeMaterial, L"m", L"cloud material");
    EXPECT_TRUE(Merge(pipeSizes));
    EXPECT_EQ(NameOf(pipeSizes, L"lost"), L"cloud");
    EXPECT_EQ(NameOf(pipeMaterial, L"m"), L"cloud material");
    EXPECT_TRUE(TableMergeFixture::Notes().empty());
}

TEST_F(TableMerge, AnIdOfBothClassesIsForgottenInTheSizeTablesFirst) {
    CloudDeletes(pipeSizes, L"both");
    Notes(pipeSizes, L"both", 2);
    Notes(pipeMaterial, L"both", 2);
    EXPECT_TRUE(Merge(pipeSizes));
    EXPECT_EQ(TableMergeFixture::Notes(), std::vector<std::string>{"MTS both 2"}) << "one list, one occurrence";
}

TEST_F(TableMerge, AnIdOfBothClassesThatStandsInTwoListsIsForgottenInBoth) {
    CloudDeletes(pipeSizes, L"both");
    Notes(pipeSizes, L"both", 2);
    Notes(pipeMaterial, L"both", 3);
    EXPECT_TRUE(Merge(pipeSizes));
    EXPECT_TRUE(TableMergeFixture::Notes().empty());
}

TEST_F(TableMerge, NamesOfMaterialsAndOfSizeTablesAreRepairedApart) {
    CloudAdds(pipeSizes, L"sizes", L"A");
    CloudAdds(pipeMaterial, L"material", L"B");
    Stands(pipeSizes, L"my sizes", L"A");
    Stands(pipeSizes, L"my other sizes", L"B");
    Stands(pipeMaterial, L"my material", L"B");
    Stands(pipeMaterial, L"my other material", L"A");
    for (const wchar_t* id : {L"my sizes", L"my other sizes"})
        Notes(pipeSizes, id, 1);
    for (const wchar_t* id : {L"my material", L"my other material"})
        Notes(pipeMaterial, id, 1);
    EXPECT_TRUE(Merge(pipeSizes));
    EXPECT_EQ(NameOf(pipeSizes, L"my sizes"), L"A(1)");
    EXPECT_EQ(NameOf(pipeSizes, L"my other sizes"), L"B");
    EXPECT_EQ(NameOf(pipeMaterial, L"my material"), L"B(1)");
    EXPECT_EQ(NameOf(pipeMaterial, L"my other material"), L"A");
}

TEST_F(TableMerge, MaterialsChangedAloneAreEnoughForTheRule) {
    Stands(pipeMaterial, L"mine", L"Steel");
    Notes(pipeMaterial, L"mine", 1);
    CloudAdds(pipeMaterial, L"theirs", L"Steel");
    EXPECT_TRUE(Merge(pipeMaterial));
    EXPECT_EQ(NameOf(pipeMaterial, L"mine"), L"Steel(1)");
}

// --- the cloud's state alone ---------------------------------------------------------------------------------------

TEST_F(TableMerge, OnlySystemTypesAndSeriesHaveATableOfTheirOwn) {
    Stands(group, L"x", L"local");
    CloudModifies(serie, L"x", L"cloud");
    for (const char* classCode : {"MSG", "PSI", "COS", "", static_cast<const char*>(nullptr)})
        tolm::DownloadTableData(add, del, &qb, classCode, L"PipeType", 1, 2);
    EXPECT_EQ(NameOf(group, L"x"), L"local");
    EXPECT_EQ(NameOf(serie, L"x"), L"gone");
}

TEST_F(TableMerge, ATableWithoutAdditionsIsOnlyDeletedFrom) {
    for (const MergedKind& kind : {systemType, serie, pipeSizes, conduit, group}) {
        Stands(kind, wstring(kind.key), L"n");
        CloudDeletes(kind, wstring(kind.key));
        EXPECT_TRUE(Merge(kind));
        EXPECT_EQ(NameOf(kind, wstring(kind.key)), L"gone") << kind.name;
    }
}

TEST_F(TableMerge, ADuctTableGoesWithItsMaterial) {
    CloudAdds(duct, L"d", L"n");
    EXPECT_TRUE(Merge(duct));
    EXPECT_EQ(Count("MTS"), 1);
    add = web::json::value::object();
    CloudDeletes(duct, L"d");
    EXPECT_TRUE(Merge(duct));
    EXPECT_EQ(Count("MTS"), 0);
    EXPECT_EQ(Count("PSI"), 0);
}

TEST_F(TableMerge, RowsOfOtherGroupsAndRowsWithoutOneAreLeftAlone) {
    CloudAdds(conduit, L"x", L"n");
    CloudAddsRow("ConfigTree", "{'ID':'y','text':'n','content':{}}");
    CloudAddsRow("ConfigTree", "{'ID':'z','groupName':7,'text':'n','content':{}}");
    CloudAddsRow("ConfigTree", "{'ID':'w','groupName':'nobodyKnows','text':'n','content':{}}");
    EXPECT_TRUE(Merge(conduit));
    EXPECT_EQ(Ids("PSI"), Texts{L"x"});
}

// --- failures ------------------------------------------------------------------------------------------------------

TEST_F(TableMerge, ATableThatIsNoArrayFailsAndSaysSo) {
    CloudAdds(serie, L"a", L"n");
    del["PipeType"] = 7;
    EXPECT_FALSE(Merge(serie));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), Warnings{L"MepQbaseUtil::MergeOneTableData: PipeType:下载失败"});
    const auto lines = TakeLogLines();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_NE(lines[lines.size() - 2].find(L"not an array"), wstring::npos) << "the exception's own text";
    EXPECT_NE(lines.back().find(L"PipeType:下载失败"), wstring::npos);
}

TEST_F(TableMerge, AFailedTableKeepsWhatWasAppliedAndForgetsWhatLost) {
    Stands(systemType, L"lost", L"local");
    Notes(systemType, L"lost", 2);
    Notes(systemType, L"kept", 3);
    CloudDeletes(systemType, L"lost");
    add["PipeSystemType"] = 7;
    EXPECT_FALSE(Merge(systemType));
    EXPECT_EQ(TakeDebugWarnings(), Warnings{L"PipeSystemType:下载失败"});
    EXPECT_EQ(NameOf(systemType, L"lost"), L"gone");
    EXPECT_EQ(TableMergeFixture::Notes(), std::vector<std::string>{"SYS kept 3"});
}

TEST_F(TableMerge, AFailedGroupSaysSoUnderItsKey) {
    CloudDeletes(conduit, L"a");
    CloudDeletesRow("ConfigTree", "{'ID':7,'groupName':'electricLinePipe'}");
    EXPECT_FALSE(Merge(conduit));
    CloudDeletesRow("ConfigTree", "{'ID':'b','groupName':'MaterialSeries'}");
    EXPECT_FALSE(Merge(pipeSizes));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::MergeSizeTable: electricLinePipe:下载失败",
                        L"MepQbaseUtil::MergePipeSizeTable: MaterialSeries:下载失败"}));
}

TEST_F(TableMerge, AFailureWithLocalChangesLeavesNamesAsTheyAre) {
    Stands(conduit, L"mine", L"Steel");
    Notes(conduit, L"mine", 1);
    CloudAdds(conduit, L"theirs", L"Steel");
    CloudAddsRow("ConfigTree", "{'ID':7,'groupName':'electricLinePipe'}");
    EXPECT_FALSE(Merge(conduit));
    EXPECT_EQ(TakeDebugWarnings(), Warnings{L"electricLinePipe:下载失败"});
    EXPECT_EQ(NameOf(conduit, L"mine"), L"Steel");
    EXPECT_EQ(NameOf(conduit, L"theirs"), L"Steel");
}

} // namespace
} // namespace tolmtest
