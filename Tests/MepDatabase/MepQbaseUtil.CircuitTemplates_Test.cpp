#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/RecordAttributes.h"
#include "StoreSupport/CircuitTemplates.h"
#include "StoreSupport/MepQbaseUtilTestAccess.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"
#include "Support/TestSession.h"

#include <limits>

namespace {

using namespace tolm;
using namespace tolmtest;

/// The storage alone: a session without a project, to which nothing is sent.
class CircuitTemplateStorage : public StoreFixture {
protected:
    bool Write(const std::vector<TemplatePtr>& templates) {
        return util.WriteCircuitTemplateList(path, ddq, Pointers(templates));
    }
    bool Write(TemplatePtr circuit) { return util.WriteCircuitTemplateList(path, ddq, {circuit.get()}); }
    std::vector<TemplatePtr> Read() {
        std::vector<TemplatePtr> list;
        const bool found = util.ReadCircuitTemplateList(path, ddq, list);
        EXPECT_EQ(found, !list.empty());
        return list;
    }
    std::vector<wstring> Ids() {
        std::vector<wstring> ids;
        for (const auto& circuit : Read())
            ids.push_back(circuit->GetId());
        return ids;
    }
    /// Puts records with these names in place: the store has them, tracked or not.
    void StoreReferences() {
        CQbase qb;
        ASSERT_TRUE(MepQbaseUtilTestAccess::OpenQbase(path, ddq, &qb, true, true));
        const std::pair<const char*, const wchar_t*> records[] = {
            {"SYS", L"system-1"}, {"PSI", L"wire-1"}, {"SMS", L"conduit-1"}};
        for (const auto& [classCode, id] : records) {
            ASSERT_TRUE(qb.createRec(classCode, id));
            ASSERT_TRUE(qb.setWsz(1601, (wstring(L"名 ") + id).c_str(), -1));
            ASSERT_TRUE(qb.saveRec());
        }
        ASSERT_TRUE(qb.closeDatabase());
    }

    const TestSession session{L"", L""};
};

TEST_F(CircuitTemplateStorage, EveryStoredFieldComesBack) {
    ASSERT_TRUE(Write(FullCircuitTemplate(L"t1")));
    const auto list = Read();
    ASSERT_EQ(list.size(), 1U);
    const auto& read = *list[0];
    EXPECT_EQ(read.GetId(), L"t1");
    EXPECT_EQ(read.GetSystemClassification(), MEPSystemClassification{43});
    EXPECT_EQ(read.GetSystemTypeId(), L"system-1");
    for (int position = 0; position < 3; ++position) {
        const wstring number = std::to_wstring(position + 1);
        EXPECT_EQ(read.GetSwitchComponentId(position), L"switch-" + number);
        EXPECT_EQ(read.GetSwitchComponentTypeName(position), L"断路器 " + number);
        EXPECT_EQ(read.GetSwitchComponentTypeId(position), L"") << "the type's id is not stored";
    }
    EXPECT_EQ(read.GetPhase(), Phase::Three);
    EXPECT_EQ(read.GetFireProtectionMaterial(), L"NH");
    EXPECT_EQ(read.GetWireTypeId(), L"wire-1");
    EXPECT_EQ(read.GetWireSpec(), L"4x16+1x10");
    EXPECT_EQ(read.GetWireCount(), L"3+1");
    EXPECT_EQ(read.GetConduitTypeId(), L"conduit-1");
    EXPECT_EQ(read.GetConduitSizeDn(), 25);
    EXPECT_EQ(read.GetIsApply(), 1);
    EXPECT_EQ(read.GetLayingMode(), L"CC");
}

TEST_F(CircuitTemplateStorage, TheFileShowsTheAttributesUnderTheirNames) {
    ASSERT_TRUE(Write(FullCircuitTemplate(L"t1")));
    EXPECT_EQ(
        Sql(path, "select SystemClassification, SystemTypeId, SwitchComponentId1, SwitchComponentId2, "
                  "SwitchComponentId3, SwitchComponentType1, SwitchComponentType2, SwitchComponentType3, Phase, "
                  "ProtectionMaterial, WireTypeId, WireSpec, WireCountStr, ConduitTypeId, ConduitSizeDN, "
                  "IsApply, LayingMode from CRT"),
        (std::vector<SqlRow>{{"43", "system-1", "switch-1", "switch-2", "switch-3", "断路器 1", "断路器 2", "断路器 3",
                              "4", "NH", "wire-1", "4x16+1x10", "3+1", "conduit-1", "25", "1", "CC"}}));
}

TEST_F(CircuitTemplateStorage, AMissingAttributeLeavesTheDefault) {
    ASSERT_TRUE(Write(FullCircuitTemplate(L"t1")));
    for (const auto& row : CircuitTemplateAttributes())
        for (const auto& each : schema::kAttributes)
            if (each.classCode == std::string("CRT") && each.id == row.id)
                Sql(path, "update CRT set " + std::string(each.name) + " = null");
    const auto list = Read();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]->GetSystemClassification(), MEPSystemClassification::DefaultCircuit);
    EXPECT_EQ(list[0]->GetFireProtectionMaterial(), L"ZR");
    EXPECT_EQ(list[0]->GetWireSpec(), L"2.5");
    EXPECT_EQ(list[0]->GetLayingMode(), L"SR");
    EXPECT_EQ(list[0]->GetPhase(), Phase::Single);
    EXPECT_EQ(list[0]->GetConduitSizeDn(), 0);
    EXPECT_EQ(list[0]->GetWireTypeId(), L"");
    EXPECT_EQ(list[0]->GetWireTypeName(), L"BV");
}

TEST_F(CircuitTemplateStorage, ANumberBeyondItsAttributeIsTheNearestOne) {
    auto circuit = CircuitTemplate(L"t1");
    circuit->SetIsApply(std::numeric_limits<int>::max());
    ASSERT_TRUE(Write(std::move(circuit)));
    EXPECT_EQ(SqlValue(path, "select IsApply from CRT"), "32767");
}

TEST_F(CircuitTemplateStorage, NoAttributeStandsTwiceInTheTable) {
    std::set<short> ids;
    for (const auto& row : CircuitTemplateAttributes())
        EXPECT_TRUE(ids.insert(row.id).second) << row.id;
    EXPECT_EQ(ids.size(), 17U);
}

// --- the names of what a template refers to
// ---------------------------------------------------------------------------

TEST_F(CircuitTemplateStorage, NamesComeFromTheSystemTheSizeTableAndTheSeries) {
    StoreReferences();
    ASSERT_TRUE(Write(FullCircuitTemplate(L"t1")));
    const auto list = Read();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]->GetSystemTypeName(), L"名 system-1");
    EXPECT_EQ(list[0]->GetWireTypeName(), L"名 wire-1");
    EXPECT_EQ(list[0]->GetConduitTypeName(), L"名 conduit-1");
}

TEST_F(CircuitTemplateStorage, ARecordThatIsGoneOrHasNoNameLeavesTheDefaultName) {
    ASSERT_TRUE(Write(FullCircuitTemplate(L"t1")));
    const auto expectDefaults = [&] {
        const auto list = Read();
        ASSERT_EQ(list.size(), 1U);
        EXPECT_EQ(list[0]->GetSystemTypeName(), L"");
        EXPECT_EQ(list[0]->GetWireTypeName(), L"BV");
        EXPECT_EQ(list[0]->GetConduitTypeName(), L"SC");
    };
    expectDefaults();
    StoreReferences();
    for (const char* table : {"SYS", "PSI", "SMS"})
        Sql(path, std::string("update ") + table + " set Name = null");
    expectDefaults();
}

TEST_F(CircuitTemplateStorage, AnEmptyNameIsAName) {
    StoreReferences();
    Sql(path, "update PSI set Name = ''");
    ASSERT_TRUE(Write(FullCircuitTemplate(L"t1")));
    EXPECT_EQ(Read().at(0)->GetWireTypeName(), L"");
}

TEST_F(CircuitTemplateStorage, AnIdIsLookedForInItsOwnClassOnly) {
    StoreReferences();
    auto circuit = CircuitTemplate(L"t1");
    wstring conduit = L"conduit-1";
    wstring wire = L"wire-1";
    circuit->SetWireTypeId(conduit);
    circuit->SetConduitTypeId(wire);
    circuit->SetSystemTypeId(wire);
    ASSERT_TRUE(Write(std::move(circuit)));
    const auto list = Read();
    EXPECT_EQ(list.at(0)->GetWireTypeName(), L"BV");
    EXPECT_EQ(list.at(0)->GetConduitTypeName(), L"SC");
    EXPECT_EQ(list.at(0)->GetSystemTypeName(), L"");
}

TEST_F(CircuitTemplateStorage, TheWalkGoesOnBehindTheNamesAndEachTemplateHasItsOwn) {
    StoreReferences();
    std::vector<TemplatePtr> templates;
    for (int i = 0; i < 20; ++i) {
        auto circuit = FullCircuitTemplate(L"t" + std::to_wstring(i));
        wstring unknown = L"nobody";
        if (i % 2 != 0)
            circuit->SetWireTypeId(unknown);
        templates.push_back(std::move(circuit));
    }
    ASSERT_TRUE(Write(templates));
    const auto list = Read();
    ASSERT_EQ(list.size(), 20U);
    for (std::size_t i = 0; i < list.size(); ++i) {
        EXPECT_EQ(list[i]->GetId(), L"t" + std::to_wstring(i));
        EXPECT_EQ(list[i]->GetSystemTypeName(), L"名 system-1");
        EXPECT_EQ(list[i]->GetWireTypeName(), i % 2 != 0 ? L"BV" : L"名 wire-1");
    }
}

TEST_F(CircuitTemplateStorage, TheReaderLeavesItsRecordTheCurrentOne) {
    StoreReferences();
    ASSERT_TRUE(Write(FullCircuitTemplate(L"t1")));
    CQbase qb;
    ASSERT_TRUE(MepQbaseUtilTestAccess::OpenQbase(path, ddq, &qb, false, false));
    ASSERT_TRUE(qb.fetchEqualRec("CRT", L"t1"));
    auto circuit = CircuitTemplate(L"other");
    EXPECT_TRUE(util.read_circuit_template_att(&qb, circuit));
    EXPECT_EQ(circuit->GetId(), L"t1");
    EXPECT_EQ(circuit->GetConduitTypeName(), L"名 conduit-1");
    CWsz id;
    EXPECT_TRUE(qb.getObjId(id));
    EXPECT_EQ(id.str(), L"t1");
    EXPECT_FALSE(qb.fetchNextMember());
}

// --- lists
// ------------------------------------------------------------------------------------------------------------

TEST_F(CircuitTemplateStorage, AListIsAppendedToInOrderOfCreation) {
    ASSERT_TRUE(Write(CircuitTemplate(L"2")) && Write(CircuitTemplate(L"1")));
    std::vector<TemplatePtr> list;
    EXPECT_TRUE(util.ReadCircuitTemplateList(path, ddq, list));
    EXPECT_TRUE(util.ReadCircuitTemplateList(path, ddq, list));
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(list[0]->GetId(), L"2");
    EXPECT_EQ(list[1]->GetId(), L"1");
}

TEST_F(CircuitTemplateStorage, AnEmptyClassAndAMissingFileReadAsFalse) {
    EXPECT_TRUE(Read().empty());
    EXPECT_FALSE(Exists(path));
    MakeStore();
    EXPECT_TRUE(Read().empty());
}

TEST_F(CircuitTemplateStorage, AWriteOfAKnownIdReplacesAndOfOneTwiceKeepsTheLast) {
    ASSERT_TRUE(Write(CircuitTemplate(L"1", L"2.5")) && Write(CircuitTemplate(L"2", L"4")));
    std::vector<TemplatePtr> templates;
    templates.push_back(CircuitTemplate(L"1", L"6"));
    templates.push_back(CircuitTemplate(L"1", L"10"));
    ASSERT_TRUE(Write(templates));
    EXPECT_EQ(Sql(path, "select WireSpec from CRT order by 1"), (std::vector<SqlRow>{{"10"}, {"4"}}));
}

TEST_F(CircuitTemplateStorage, ATemplateWithoutAnIdGetsOne) {
    const auto circuit = CircuitTemplate(L"");
    EXPECT_TRUE(util.WriteCircuitTemplateList(path, ddq, {circuit.get()}));
    EXPECT_EQ(circuit->GetId().size(), 36U);
    EXPECT_EQ(Ids(), std::vector<wstring>{circuit->GetId()});
    EXPECT_TRUE(util.WriteCircuitTemplateList(path, ddq, {circuit.get()}));
    EXPECT_EQ(Ids().size(), 1U) << "the second write is an edit";
}

TEST_F(CircuitTemplateStorage, ANullEntryIsReportedAndTheOthersAreWritten) {
    const auto first = CircuitTemplate(L"1");
    const auto second = CircuitTemplate(L"2");
    EXPECT_TRUE(util.WriteCircuitTemplateList(path, ddq, {first.get(), nullptr, second.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::WriteCircuitTemplateList: circuitTemplate为空"}));
    EXPECT_EQ(Ids(), (std::vector<wstring>{L"1", L"2"}));
}

TEST_F(CircuitTemplateStorage, IsNotTracked) {
    const auto circuit = CircuitTemplate(L"1");
    EXPECT_TRUE(util.WriteCircuitTemplateList(path, ddq, {circuit.get()}));
    EXPECT_TRUE(util.DeleteCircuitTemplateList(path, ddq, {circuit.get()}));
    EXPECT_FALSE(Exists(statusPath));
}

TEST_F(CircuitTemplateStorage, ADeletionTakesTheKnown) {
    ASSERT_TRUE(Write(CircuitTemplate(L"1")) && Write(CircuitTemplate(L"2")) && Write(CircuitTemplate(L"3")));
    const auto second = CircuitTemplate(L"2");
    const auto unknown = CircuitTemplate(L"9");
    EXPECT_TRUE(util.DeleteCircuitTemplateList(path, ddq, {second.get(), unknown.get()}));
    EXPECT_EQ(Ids(), (std::vector<wstring>{L"1", L"3"}));
}

TEST_F(CircuitTemplateStorage, ADeletionMakesAStoreThatIsNotThere) {
    EXPECT_TRUE(util.DeleteCircuitTemplateList(path, ddq, {}));
    EXPECT_TRUE(Exists(path));
}

TEST_F(CircuitTemplateStorage, ADeletionStopsAtANullEntryAndKeepsWhatItHasDone) {
    ASSERT_TRUE(Write(CircuitTemplate(L"1")) && Write(CircuitTemplate(L"2")));
    const auto first = CircuitTemplate(L"1");
    const auto second = CircuitTemplate(L"2");
    EXPECT_FALSE(util.DeleteCircuitTemplateList(path, ddq, {first.get(), nullptr, second.get()}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::DeleteCircuitTemplateList: circuitTemplateList[i]为空"}));
    EXPECT_EQ(Ids(), std::vector<wstring>{L"2"});
}

// --- faults
// -----------------------------------------------------------------------------------------------------------

TEST_F(CircuitTemplateStorage, AFactoryThatMakesNothingIsReportedForEachRecord) {
    ASSERT_TRUE(Write(CircuitTemplate(L"1")) && Write(CircuitTemplate(L"2")));
    const EmptyFactory nothing;
    EXPECT_TRUE(Read().empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReadCircuitTemplateList: pTempTemplate为空",
                                                         L"MepQbaseUtil::ReadCircuitTemplateList: pTempTemplate为空"}));
}

TEST_F(CircuitTemplateStorage, TheReaderRefusesNoStoreAndNoTemplate) {
    CQbase qb;
    TemplatePtr none;
    auto circuit = CircuitTemplate(L"1");
    EXPECT_FALSE(util.read_circuit_template_att(nullptr, circuit));
    EXPECT_FALSE(util.read_circuit_template_att(&qb, none));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::read_circuit_template_att: qb为空",
                                                         L"MepQbaseUtil::read_circuit_template_att: retTemplate为空"}));
}

TEST_F(CircuitTemplateStorage, WithoutAStoreHandleEachOperationSaysSo) {
    const NoStoreHandles none;
    std::vector<TemplatePtr> list;
    EXPECT_FALSE(util.ReadCircuitTemplateList(path, ddq, list));
    EXPECT_FALSE(util.WriteCircuitTemplateList(path, ddq, {}));
    EXPECT_FALSE(util.DeleteCircuitTemplateList(path, ddq, {}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"MepQbaseUtil::ReadCircuitTemplateList: qb为空",
                                                         L"MepQbaseUtil::WriteCircuitTemplateList: qb为空",
                                                         L"MepQbaseUtil::DeleteCircuitTemplateList: qb为空"}));
}

TEST_F(CircuitTemplateStorage, WithoutAPathNothingIsDone) {
    const auto circuit = CircuitTemplate(L"1");
    std::vector<TemplatePtr> list;
    EXPECT_FALSE(util.ReadCircuitTemplateList(L"", ddq, list));
    EXPECT_FALSE(util.WriteCircuitTemplateList(L"", ddq, {circuit.get()}));
    EXPECT_FALSE(util.DeleteCircuitTemplateList(path, L"", {circuit.get()}));
    EXPECT_FALSE(Exists(path));
}

} // namespace
