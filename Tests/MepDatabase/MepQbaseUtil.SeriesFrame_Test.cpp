#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/SeriesFixture.h"
#include "Support/FileSizeLimit.h"

#include <functional>

namespace {

using namespace tolm;
using namespace tolmtest;

struct Paths {
    MepQbaseUtil& util;
    const wstring& path;
    const wstring& ddq;
    const wstring& components;
};

/// One operation on series and system types, true when it could do its work.
struct SeriesOperation {
    const char* name;
    bool forUpdate;
    bool create;
    std::function<bool(const Paths&)> run;
};

/// The operation's function, which two of them share.
std::string FunctionOf(const SeriesOperation& operation) {
    const std::string shared = "ReadConectionSerieList";
    const std::string name = operation.name;
    return name.starts_with(shared) ? shared : name;
}

void PrintTo(const SeriesOperation& operation, std::ostream* out) {
    *out << operation.name;
}

const SeriesOperation kSeriesOperations[] = {
    {"ReadConectionSerieListByType", false, false,
     [](const Paths& at) {
         std::map<wstring, ConnectionPtr> series;
         return at.util.ReadConectionSerieList(at.path, at.ddq, at.components, Type::Pipe,
                                               {{Connector::PipeThreaded, L""}}, series);
     }},
    {"ReadConectionSerieListOfOneConnector", false, false,
     [](const Paths& at) {
         std::vector<ConnectionPtr> list;
         return at.util.ReadConectionSerieList(at.path, at.ddq, at.components, Connector::PipeThreaded, list);
     }},
    {"ReadMEPMaterialSerie", false, false,
     [](const Paths& at) {
         SeriePtr serie;
         return at.util.ReadMEPMaterialSerie(at.path, at.ddq, at.components, L"s", serie);
     }},
    {"ReadMEPMaterialSerieList", false, false,
     [](const Paths& at) {
         std::vector<SeriePtr> list;
         return at.util.ReadMEPMaterialSerieList(at.path, at.ddq, at.components, Type::Pipe, Discipline::Plumbing,
                                                 list);
     }},
    {"ReadMEPMaterialSerieGroupList", false, false,
     [](const Paths& at) {
         std::vector<GroupPtr> list;
         return at.util.ReadMEPMaterialSerieGroupList(at.path, at.ddq, Type::Pipe, Discipline::Plumbing, list);
     }},
    {"ReadSystemType", false, false,
     [](const Paths& at) {
         SystemTypePtr systemType;
         return at.util.ReadSystemType(at.path, at.ddq, at.components, L"X", systemType);
     }},
    {"ReadSystemTypeList", false, false,
     [](const Paths& at) {
         std::vector<SystemTypePtr> list;
         return at.util.ReadSystemTypeList(at.path, at.ddq, at.components, Discipline::Plumbing, Type::Pipe, list);
     }},
    {"ReadSystemTypeNameIds", false, false,
     [](const Paths& at) {
         std::vector<std::map<wstring, wstring>> names;
         return at.util.ReadSystemTypeNameIds(at.path, at.ddq, {2}, {1}, names);
     }},
    {"ReadMEPSerieRecordGuidListOfSystemType", false, false,
     [](const Paths& at) {
         std::map<wstring, std::vector<wstring>> lists;
         return at.util.ReadMEPSerieRecordGuidListOfSystemType(at.path, at.ddq, {L"X"}, lists);
     }},
    {"DoesSystemTypeRecordExist", false, false,
     [](const Paths& at) { return at.util.DoesSystemTypeRecordExist(at.path, at.ddq, L"X"); }},
    {"WriteMEPMaterialSerie", true, true,
     [](const Paths& at) { return at.util.WriteMEPMaterialSerie(at.path, at.ddq, Serie(L"s", L"new").get()); }},
    {"WriteMEPMaterialSerieGroup", true, true,
     [](const Paths& at) { return at.util.WriteMEPMaterialSerieGroup(at.path, at.ddq, Group(L"g", L"new").get()); }},
    {"WriteSystemType", true, true,
     [](const Paths& at) { return at.util.WriteSystemType(at.path, at.ddq, SystemType(L"X", L"new").get()); }},
    {"DeleteMEPMaterialSerieList", true, false,
     [](const Paths& at) { return at.util.DeleteMEPMaterialSerieList(at.path, at.ddq, {Serie(L"s").get()}); }},
    {"DeleteMEPMaterialSerieGroupList", true, false,
     [](const Paths& at) { return at.util.DeleteMEPMaterialSerieGroupList(at.path, at.ddq, {Group(L"g").get()}); }},
    {"DeleteSystemTypeList", true, false,
     [](const Paths& at) { return at.util.DeleteSystemTypeList(at.path, at.ddq, {SystemType(L"X").get()}); }},
    {"IsTheMEPMaterialSeireReferred", true, false,
     [](const Paths& at) {
         wstring name;
         return at.util.IsTheMEPMaterialSeireReferred(at.path, at.ddq, Serie(L"s").get(), name);
     }},
    {"ReplaceFittingComponentId", true, false,
     [](const Paths& at) {
         return at.util.ReplaceFittingComponentId(at.path, at.ddq, {{L"e1", L"e2"}});
     }},
};

class EachSeriesOperation : public SeriesFixture, public testing::WithParamInterface<SeriesOperation> {
protected:
    /// A store in which each operation finds what it looks for.
    void Fill() {
        auto serie = Serie(L"s", L"steel");
        auto connection = Connection(L"c", L"threaded");
        AddFitting(*connection, {.component = L"e1"});
        serie->SetConnectionSerie(connection);
        serie->SetSerieGroup(Group(L"g", L"group"));
        auto systemType = SystemType(L"X", L"cold water");
        auto link = Serie(L"s");
        systemType->AddSystemMaterialSerie(link);
        ASSERT_TRUE(Write(serie) && Write(systemType));
    }
    bool Run() { return GetParam().run({util, path, ddq, components}); }
    std::string Content() {
        std::string content;
        for (const char* query : {"select id, Name from SMS", "select id, Name from MSG", "select id, Name from SYS",
                                  "select id, Name, hex(FittingList) from COS"})
            for (const auto& row : Sql(path, query))
                for (const auto& value : row)
                    content += value + "|";
        return content;
    }
};

TEST_P(EachSeriesOperation, WorksOnAStore) {
    Fill();
    EXPECT_TRUE(Run());
}

TEST_P(EachSeriesOperation, BringsAMissingFileIntoBeingOnlyWhereItWrites) {
    EXPECT_EQ(Run(), GetParam().create);
    EXPECT_EQ(Exists(path), GetParam().create);
}

TEST_P(EachSeriesOperation, NeedsTheUpdateLockAsTheTableSays) {
    Fill();
    const LockTimeout atOnce(0);
    CQbase reader;
    ASSERT_TRUE(reader.openDatabase(ddq, path, false) && reader.lockForRead());
    EXPECT_EQ(Run(), !GetParam().forUpdate);
}

TEST_P(EachSeriesOperation, FailsQuietlyWhereAnotherHoldsTheUpdateLock) {
    Fill();
    CQbase writer;
    ASSERT_TRUE(writer.openDatabase(ddq, path, false) && writer.lockForUpdate());
    EXPECT_FALSE(Run());
}

TEST_P(EachSeriesOperation, ReportsThatNoHandleCanBeMade) {
    Fill();
    const NoStoreHandles none;
    EXPECT_FALSE(Run());
    const std::string function = FunctionOf(GetParam());
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"MepQbaseUtil::" + wstring(function.begin(), function.end()) + L": qb为空"}));
}

TEST_P(EachSeriesOperation, LeavesNothingOpen) {
    Fill();
    Run();
    const LockTimeout atOnce(0);
    CQbase qb;
    EXPECT_TRUE(qb.openDatabase(ddq, path, false) && qb.lockForUpdate());
}

TEST_P(EachSeriesOperation, WhoseChangeIsNotOnDiskIsReportedAndFalse) {
    Fill();
    const std::string before = Content();
    const std::string name = GetParam().name;
    {
        const FileSizeLimit full(0);
        EXPECT_EQ(Run(), !GetParam().forUpdate || name == "IsTheMEPMaterialSeireReferred");
    }
    const auto warnings = TakeDebugWarningsWithFunction();
    if (GetParam().forUpdate && name != "IsTheMEPMaterialSeireReferred")
        EXPECT_EQ(warnings,
                  (Warnings{L"MepQbaseUtil::" + wstring(name.begin(), name.end()) + L": closeDatabase 失败"}));
    else
        EXPECT_EQ(warnings, Warnings());
    EXPECT_EQ(Content(), before);
}

INSTANTIATE_TEST_SUITE_P(Store, EachSeriesOperation, testing::ValuesIn(kSeriesOperations),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
