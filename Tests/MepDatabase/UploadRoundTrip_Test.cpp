#include "StoreSupport/UploadRecords.h"

#include "MepDatabase/Encoders.h"
#include "MepDatabase/WireText.h"
#include "StoreSupport/IngestFixture.h"

/// What goes up comes down again: a record is encoded, put on the wire and ingested into an empty store; what is read
/// there is encoded once more and gives the same row. Where something is lost on the way, the test says what.
namespace tolmtest {
namespace {

using web::json::value;

value OnTheWire(const value& row) {
    return Json(row.serialize());
}

value RowOf(const SharedSize& size, const wchar_t* group, Type kind) {
    return OnlyRow(tolm::GetCreatedOrEditedSizeModelListJasonValue(false, true, group, static_cast<int>(kind), {size}));
}

value RowOf(const SharedMaterial& material, const wchar_t* group) {
    return OnlyRow(tolm::GetCreatedOrEditedMateriaListJasonValue(false, true, group, {material}));
}

value RowOf(const SharedGroup& group, const wchar_t* name) {
    return OnlyRow(tolm::GetCreatedOrEditedMaterieSerieGroupJasonValue(false, true, name, {group}));
}

value RowOf(const SharedSerie& serie) {
    return OnlyRow(tolm::GetCreatedOrEditedMEPMaterialListJasonValue(false, true, {serie}));
}

value RowOf(const SharedSystemType& system) {
    return OnlyRow(tolm::GetCreatedOrEditedSystemTypeListJasonValue(false, true, {system}));
}

class UploadRoundTrip : public SeriesFixture {
protected:
    /// Brings a row of "ConfigTree" down.
    void IngestTree(const value& row, Discipline discipline) {
        const wstring group = tolm::FromWire(row.at("groupName").as_string());
        Ingest([&](CQbase& qb) {
            if (group == L"MaterialSeries" || group == L"HVACMaterialSeries") {
                util.SyncPipeSizeTableItem(&qb, static_cast<short>(discipline), OnTheWire(row));
                return;
            }
            const wstring id = tolm::FromWire(row.at("ID").as_string());
            EXPECT_TRUE(util.SyncSizeTableExceptPipeAndGroupTableItem(&qb, group, id.c_str(), OnTheWire(row)));
        });
    }
    void IngestSerie(const value& row, Type type, Discipline discipline) {
        Ingest([&](CQbase& qb) {
            EXPECT_TRUE(
                util.SyncMaterialSerie(OnTheWire(row), &qb, static_cast<short>(type), static_cast<short>(discipline)));
        });
    }
    void IngestSystemType(const value& row, Type type, Discipline discipline) {
        Ingest([&](CQbase& qb) {
            EXPECT_TRUE(
                util.SyncSystemTypes(&qb, static_cast<short>(type), static_cast<short>(discipline), {OnTheWire(row)}));
        });
    }
    SharedSize ReadSize(Type type, Discipline discipline) {
        std::vector<SizeModulePtr> list;
        EXPECT_TRUE(util.ReadSizeModuleList(path, ddq, type, discipline, list));
        return list.size() == 1 ? Shared(std::move(list[0])) : Shared(SizeModule(L"none", L""));
    }
    SharedSystemType ReadSystem(const wstring& id) {
        SystemTypePtr system;
        EXPECT_TRUE(util.ReadSystemType(path, ddq, components, id, system));
        return system ? Shared(std::move(system)) : Shared(SystemType(L"none"));
    }

private:
    template <class Apply> void Ingest(const Apply& apply) {
        CQbase qb;
        ASSERT_TRUE(qb.openDatabase(ddq, path, true));
        ASSERT_TRUE(qb.lockForUpdate());
        apply(qb);
        ASSERT_TRUE(qb.closeDatabase());
    }
};

// --- materials, groups and size tables
// --------------------------------------------------------------------------------

TEST_F(UploadRoundTrip, KeepsAMaterial) {
    for (const auto& [group, discipline] :
         {std::pair{L"MaterialSeries", Discipline::Plumbing}, {L"HVACMaterialSeries", Discipline::HVAC}}) {
        const auto row =
            RowOf(Shared(Material(L"mts-1", L"镀锌钢管", Type::Pipe, discipline, 1'700'000'000'123)), group);
        IngestTree(row, discipline);
        std::vector<MaterialPtr> list;
        EXPECT_TRUE(util.ReadMaterialList(path, ddq, Type::Pipe, discipline, list));
        ASSERT_EQ(list.size(), 1U);
        EXPECT_EQ(list[0]->GetDisciplineId(), discipline);
        EXPECT_EQ(RowOf(Shared(std::move(list[0])), group), row);
    }
}

struct GroupCase {
    const wchar_t* name;
    Type type;
    Discipline discipline;
};

TEST_F(UploadRoundTrip, KeepsAGroupAndLosesTheTimeOfADuctGroup) {
    for (const auto& [name, type, discipline] : {GroupCase{L"pipeFittingGroup", Type::Pipe, Discipline::Plumbing},
                                                 {L"havcFittingGroup", Type::Pipe, Discipline::HVAC},
                                                 {L"ductFittingGroup", Type::Duct, Discipline::HVAC}}) {
        auto row = RowOf(Shared(Group(L"msg-1", L"沟槽", type, discipline, 1'700'000'000'123)), name);
        IngestTree(row, discipline);
        std::vector<GroupPtr> list;
        EXPECT_TRUE(util.ReadMEPMaterialSerieGroupList(path, ddq, type, discipline, list));
        ASSERT_EQ(list.size(), 1U);
        row["CreateTime"] = value::number(std::uint64_t(list[0]->GetCreateTime()));
        EXPECT_EQ(RowOf(Shared(std::move(list[0])), name), row);
    }
}

TEST_F(UploadRoundTrip, KeepsAPipeTableWithItsMaterial) {
    for (const auto& [group, discipline] :
         {std::pair{L"MaterialSeries", Discipline::Plumbing}, {L"HVACMaterialSeries", Discipline::HVAC}}) {
        const auto row = RowOf(Shared(FullSize(Type::Pipe, discipline)), group, Type::Pipe);
        IngestTree(RowOf(Shared(Material(L"mts-1", L"Steel", Type::Pipe, discipline)), group), discipline);
        IngestTree(row, discipline);
        EXPECT_EQ(RowOf(ReadSize(Type::Pipe, discipline), group, Type::Pipe), row);
    }
}

TEST_F(UploadRoundTrip, LosesWhatIsBehindTheThirdDigitOfALength) {
    IngestTree(RowOf(Shared(FullSize(Type::Pipe, Discipline::Plumbing)), L"MaterialSeries", Type::Pipe),
               Discipline::Plumbing);
    const auto size = ReadSize(Type::Pipe, Discipline::Plumbing);
    EXPECT_EQ(size->GetPipeSizeList(),
              (std::vector<tolm::ProjectSettingPipeSize>{{16.1F, 21.3F, 15.0F, 2.6F}, {12.345F, 0.0F, 20.75F, 0.1F}}));
    EXPECT_EQ(size->GetRoughness(), 0.1234);
}

/// Such a number goes out without a fraction, which the ingest passes over, unless the service gives it one.
TEST_F(UploadRoundTrip, LosesAWholeNumberAsRoughness) {
    auto whole = FullSize(Type::Pipe, Discipline::Plumbing);
    whole->SetRoughness(1.0);
    const auto row = RowOf(Shared(std::move(whole)), L"MaterialSeries", Type::Pipe);
    EXPECT_TRUE(row.at("content").at("roughness").is_double());
    EXPECT_EQ(row.at("content").at("roughness").serialize(), "1");
    IngestTree(RowOf(Shared(FullSize(Type::Pipe, Discipline::Plumbing)), L"MaterialSeries", Type::Pipe),
               Discipline::Plumbing);
    IngestTree(row, Discipline::Plumbing);
    EXPECT_EQ(ReadSize(Type::Pipe, Discipline::Plumbing)->GetRoughness(), 0.1234);
}

TEST_F(UploadRoundTrip, KeepsADuctTableAndGivesItAMaterialOfItsOwn) {
    auto row = RowOf(Shared(FullSize(Type::Duct, Discipline::HVAC)), L"ductSeriesType", Type::Duct);
    IngestTree(row, Discipline::HVAC);
    const auto read = ReadSize(Type::Duct, Discipline::HVAC);
    ASSERT_NE(read->GetMaterial(), nullptr);
    EXPECT_EQ(read->GetMaterial()->GetName(), L"Steel");
    EXPECT_NE(read->GetMaterial()->GetId(), L"mts-1");
    row["parentID"] = tolm::JsonText(read->GetMaterial()->GetId());
    EXPECT_EQ(RowOf(read, L"ductSeriesType", Type::Duct), row);
    EXPECT_EQ(read->GetDuctSizeList(), (std::vector<tolm::ProjectSettingDuctSize>{{0.1F, 0.75F}, {1250.0F, 1.2F}}));
}

TEST_F(UploadRoundTrip, KeepsATrayConduitOrCableTableAndLosesItsMaterial) {
    for (const auto& [group, type] : {std::pair{L"cableTray", Type::CableTray},
                                      {L"electricLinePipe", Type::Conduit},
                                      {L"electricWireType", Type::Wire}}) {
        auto row = RowOf(Shared(FullSize(type, Discipline::Electrical)), group, type);
        IngestTree(row, Discipline::Electrical);
        const auto read = ReadSize(type, Discipline::Electrical);
        row["parentID"] = value::string("");
        if (type == Type::Conduit)
            row["content"]["sizeList"][1]["DN"] = value::number(20);
        EXPECT_EQ(RowOf(read, group, type), row);
    }
}

TEST_F(UploadRoundTrip, GivesACableTableItsTypeNameAsName) {
    IngestTree(RowOf(Shared(FullSize(Type::Wire, Discipline::Electrical)), L"electricWireType", Type::Wire),
               Discipline::Electrical);
    const auto read = ReadSize(Type::Wire, Discipline::Electrical);
    EXPECT_EQ(read->GetName(), L"BV-500");
    EXPECT_EQ(read->GetCableSpecTypeName(), L"BV-500");
    EXPECT_EQ(read->GetCableSpecificationList(),
              FullSize(Type::Wire, Discipline::Electrical)->GetCableSpecificationList());
}

// --- series
// -----------------------------------------------------------------------------------------------------------

/// A series with what the fixture's catalogue holds, each fitting for all sizes.
SharedSerie CatalogueSerie(Type type, Discipline discipline) {
    auto serie = FullSerie(type, discipline);
    auto connection = Connection(L"cos-1", L"n", Connector::PipeGrooved, type);
    for (const auto& [part, id] : {std::pair{1, L"e2"}, {1, L"e1"}, {2, L"e1"}}) {
        const CatalogueEntry entry{id, L"elbow"};
        AddComponent(*connection, part, &entry, 1.0, 1'000'000.0);
    }
    serie->SetConnectionSerie(connection);
    return Shared(std::move(serie));
}

TEST_F(UploadRoundTrip, KeepsAPipeOrDuctSeriesWithItsPartsAndFittings) {
    IngestTree(RowOf(Shared(Group(L"msg-1", L"g")), L"pipeFittingGroup"), Discipline::Plumbing);
    IngestTree(RowOf(Shared(FullSize(Type::Pipe, Discipline::Plumbing)), L"MaterialSeries", Type::Pipe),
               Discipline::Plumbing);
    for (const auto& [type, discipline] : {std::pair{Type::Pipe, Discipline::Plumbing},
                                           {Type::Pipe, Discipline::HVAC},
                                           {Type::Duct, Discipline::HVAC}}) {
        const auto row = RowOf(CatalogueSerie(type, discipline));
        IngestSerie(row, type, discipline);
        EXPECT_EQ(RowOf(Shared(Read(L"sms-1"))), row);
    }
}

TEST_F(UploadRoundTrip, KeepsATraySeriesByTheShapeOfItsTable) {
    IngestTree(RowOf(Shared(FullSize(Type::CableTray, Discipline::Electrical)), L"cableTray", Type::CableTray),
               Discipline::Electrical);
    const auto row = RowOf(CatalogueSerie(Type::CableTray, Discipline::Electrical));
    IngestSerie(row, Type::CableTray, Discipline::Electrical);
    const auto read = Shared(Read(L"sms-1"));
    EXPECT_EQ(RowOf(read), row);
    ASSERT_NE(read->GetSizeModule(), nullptr);
    EXPECT_EQ(read->GetSizeModule()->GetId(), L"psi-1");
}

TEST_F(UploadRoundTrip, KeepsAConduitSeries) {
    IngestTree(RowOf(Shared(FullSize(Type::Conduit, Discipline::Electrical)), L"electricLinePipe", Type::Conduit),
               Discipline::Electrical);
    const auto row = RowOf(CatalogueSerie(Type::Conduit, Discipline::Electrical));
    IngestSerie(row, Type::Conduit, Discipline::Electrical);
    EXPECT_EQ(RowOf(Shared(Read(L"sms-1"))), row);
}

TEST_F(UploadRoundTrip, LosesTheBoundsOfFittingsAndThoseThatTheCatalogueLacks) {
    auto serie = Serie(L"sms-1", L"n");
    auto connection = Connection(L"cos-1");
    for (const wchar_t* id : {L"e1", L"gone"}) {
        const CatalogueEntry entry{id, L"elbow", 7, 8};
        AddComponent(*connection, 1, &entry, 15.5, 300.25);
    }
    serie->SetConnectionSerie(connection);
    IngestSerie(RowOf(Shared(std::move(serie))), Type::Pipe, Discipline::Plumbing);
    const auto row = RowOf(Shared(Read(L"sms-1")));
    EXPECT_EQ(row.at("Elbow"), Row("[{'id':'e1','version':1,'categoryCode':'elbow','FittingPartType':1,'min':1.0,"
                                   "'max':1000000.0,'publicComponentId':'0'}]"));
}

// --- system types
// -----------------------------------------------------------------------------------------------------

TEST_F(UploadRoundTrip, KeepsASystemTypeWithTheOrderOfItsSeries) {
    for (const wchar_t* id : {L"sms-1", L"sms-2"})
        IngestSerie(RowOf(Shared(Serie(id, id))), Type::Pipe, Discipline::Plumbing);
    for (const auto& [type, discipline] : {std::pair{Type::Pipe, Discipline::Plumbing},
                                           {Type::Pipe, Discipline::HVAC},
                                           {Type::Duct, Discipline::HVAC}}) {
        const auto row = RowOf(Shared(FullSystemType(type, discipline)));
        IngestSystemType(row, type, discipline);
        const auto read = ReadSystem(L"sys-1");
        EXPECT_EQ(RowOf(read), row);
        EXPECT_EQ(read->GetDisciplineId(), discipline);
    }
}

TEST_F(UploadRoundTrip, KeepsAnElectricalSystemTypeWithItsCables) {
    for (const wchar_t* name : {L"BV", L"YJV"}) {
        auto cable = SizeModule(wstring(L"psi-") + name, L"cable", Type::Wire, Discipline::Electrical);
        wstring typeName = name;
        cable->SetCableSpecTypeName(typeName);
        IngestTree(RowOf(Shared(std::move(cable)), L"electricWireType", Type::Wire), Discipline::Electrical);
    }
    const auto row = RowOf(Shared(FullSystemType(Type::ElectricalSystem, Discipline::Electrical)));
    IngestSystemType(row, Type::Wire, Discipline::Electrical);
    EXPECT_EQ(RowOf(ReadSystem(L"sys-1")), row);
}

} // namespace
} // namespace tolmtest
