#include "StoreSupport/RecordFacts.h"
#include "StoreSupport/SyncFixture.h"
#include "StoreSupport/UploadRecords.h"
#include "Vorn/Text.h"

/// Every kind of tracked record goes from one dataset to the service and from there into another one, through what a
/// host sees of them. Where something is lost on the way, the test says what.
namespace tolmtest {
namespace {

using nlohmann::json;
using TableId = tolm::TolmProjectSettingTableId;
using tolm::EditTable;

/// Records of one kind that have a table of the service, or a group of its configuration tree, to themselves.
struct Slice {
    TableId id;
    Type type;
    Discipline discipline;
};

constexpr Slice kMaterials[] = {{TableId::PlumbingPipeMaterials, Type::Pipe, Discipline::Plumbing},
                                {TableId::HVACPipeMaterials, Type::Pipe, Discipline::HVAC}};
constexpr Slice kSizes[] = {
    {TableId::PlumbingPipeSizes, Type::Pipe, Discipline::Plumbing},
    {TableId::HVACPipeSizes, Type::Pipe, Discipline::HVAC},
    {TableId::DuctSizes, Type::Duct, Discipline::HVAC},
    {TableId::CableTraySizes, Type::CableTray, Discipline::Electrical},
    {TableId::ConduitSizes, Type::Conduit, Discipline::Electrical},
    {TableId::WireSizes, Type::Wire, Discipline::Electrical},
};
constexpr Slice kGroups[] = {{TableId::PlumbingPipeSeries, Type::Pipe, Discipline::Plumbing},
                             {TableId::HVACPipeSeries, Type::Pipe, Discipline::HVAC},
                             {TableId::DuctSeries, Type::Duct, Discipline::HVAC}};
constexpr Slice kSeries[] = {
    {TableId::PlumbingPipeSeries, Type::Pipe, Discipline::Plumbing},
    {TableId::HVACPipeSeries, Type::Pipe, Discipline::HVAC},
    {TableId::DuctSeries, Type::Duct, Discipline::HVAC},
    {TableId::ConduitSeries, Type::Conduit, Discipline::Electrical},
    {TableId::CableTraySeries, Type::CableTray, Discipline::Electrical},
};
constexpr Slice kSystems[] = {
    {TableId::PlumbingPipeSystemTypes, Type::Pipe, Discipline::Plumbing},
    {TableId::HVACPipeSystemTypes, Type::Pipe, Discipline::HVAC},
    {TableId::DuctSystemTypes, Type::Duct, Discipline::HVAC},
    {TableId::ElectricalSystemTypes, Type::ElectricalSystem, Discipline::Electrical},
};

/// "pipe-2": unlike those of all other slices.
wstring Tag(Type type, Discipline discipline) {
    return std::to_wstring(static_cast<int>(type)) + L"-" + std::to_wstring(static_cast<int>(discipline));
}
wstring Tag(const Slice& slice) {
    return Tag(slice.type, slice.discipline);
}

/// The time of creation of a slice's record.
__int64 TimeOf(const Slice& slice) {
    return 1'700'000'000'000 + static_cast<int>(slice.id);
}

/// What is written as a record is created and as it is edited: no value of the one is one of the other.
enum class Stage { Created, Edited };

class RecordsOf {
public:
    explicit RecordsOf(Stage stage) : m_edited(stage == Stage::Edited) {}

    MaterialPtr MaterialOf(const Slice& slice) const {
        return Material(L"mts-" + Tag(slice), Named(L"镀锌钢管"), slice.type, slice.discipline, TimeOf(slice));
    }

    GroupPtr GroupOf(const Slice& slice) const {
        return Group(L"msg-" + Tag(slice), Named(L"沟槽 \"DN\""), slice.type, slice.discipline, TimeOf(slice));
    }

    /// With what its kind has beside the list.
    SizeModulePtr SizeOf(const Slice& slice) const {
        auto size = SizeModule(L"psi-" + Tag(slice), Named(L"表"), slice.type, slice.discipline, TimeOf(slice));
        size->SetMaterial(
            Material(L"mts-" + Tag(slice), Named(L"镀锌钢管"), slice.type, slice.discipline, TimeOf(slice)));
        if (slice.type == Type::Pipe)
            size->SetRoughness(m_edited ? 2.0 : 0.12345);
        if (slice.type == Type::Duct) {
            size->SetDuctShape(m_edited ? tolm::SectionType::Oval : tolm::SectionType::Round);
            size->SetPressureGrade(m_edited ? tolm::PressureGrade::High : tolm::PressureGrade::Medium);
        }
        if (slice.type == Type::CableTray)
            size->SetCableTrayShape(m_edited ? tolm::CableTrayShape::Mesh : tolm::CableTrayShape::Perforated);
        if (slice.type == Type::Wire)
            FillCable(*size);
        else
            FillSizes(*size);
        return size;
    }

    /// With a fitting of each part type that its object type can send, from the sample's catalogue.
    SeriePtr SerieOf(const Slice& slice) const {
        auto serie = Serie(L"sms-" + Tag(slice), Named(L"系列"), slice.type, slice.discipline);
        serie->SetCreateTime(TimeOf(slice));
        serie->SetMinSize(m_edited ? 25.5 : 15.0625);
        serie->SetMaxSize(m_edited ? 250.25 : 300.0);
        serie->SetJunctionType(m_edited ? tolm::PreferredJunctionType::Tee : tolm::PreferredJunctionType::Tap);
        auto size = SizeOf(slice);
        serie->SetSizeModule(size);
        if (slice.type == Type::Pipe || slice.type == Type::Duct)
            serie->SetSerieGroup(GroupOf(slice));
        auto connection = ConnectionOf(slice);
        serie->SetConnectionSerie(connection);
        return serie;
    }

    SystemTypePtr SystemOf(const Slice& slice) const {
        auto system = SystemType(L"sys-" + Tag(slice), Named(L"冷水"), slice.type, slice.discipline);
        wstring code = Named(L"CW");
        system->SetCode(code);
        wstring description = Named(L"to \"all\" floors\n");
        system->SetDescription(description);
        system->SetClassification(tolm::MEPSystemClassification{m_edited ? 23 : 22});
        system->SetCreateTime(TimeOf(slice));
        if (slice.type == Type::ElectricalSystem)
            system->AddCableSpecType(SizeOf(kSizes[5]));
        else
            AddSeries(*system, slice);
        return system;
    }

private:
    wstring Named(const wstring& name) const { return name + (m_edited ? L" 改" : L" 新"); }
    float Length(float length) const { return m_edited ? length + 1.0F : length; }

    tolm::ProjectSettingPipeSize Pipe(float nominal, float outer, float inner, float thickness) const {
        tolm::ProjectSettingPipeSize size;
        size.nominalDiameter = Length(nominal);
        size.outerDiameter = Length(outer);
        size.innerDiameter = Length(inner);
        size.thickness = Length(thickness);
        return size;
    }
    void FillSizes(tolm::IProjectSettingSizeModule& size) const {
        const Type type = size.GetMEPType();
        if (type == Type::Pipe || type == Type::Conduit) {
            size.AddPipeSize(Pipe(16.0F, 21.25F, 15.5F, 2.5F));
            size.AddPipeSize(Pipe(20.75F, 0.0F, 20.0625F, 0.5F));
        } else {
            size.AddDuctSize({Length(100.0F), Length(0.75F)});
            size.AddDuctSize({Length(1250.5F), Length(1.25F)});
        }
    }
    void FillCable(tolm::IProjectSettingSizeModule& size) const {
        wstring typeName = Named(L"BV-500");
        size.SetCableSpecTypeName(typeName);
        size.SetCableMaterial(m_edited ? tolm::CableMaterial::Copper : tolm::CableMaterial::Aluminium);
        size.SetCableEnvironmentTemperature(m_edited ? tolm::EnvironmentTemperature::Celsius30
                                                     : tolm::EnvironmentTemperature::Celsius35);
        size.AddCableSpecification({L"2.5", m_edited ? 25 : 24, tolm::EnvironmentTemperature::Celsius25});
        size.AddCableSpecification({Named(L"4²"), 31, tolm::EnvironmentTemperature::Celsius40});
    }

    /// In the order in which they come back.
    static std::vector<int> PartsOf(Type type) {
        if (type == Type::CableTray)
            return {3, 4, 5, 6, 1, 2, 21, 22, 23, 24, 26, 27, 28, 29};
        if (type == Type::Duct)
            return {1, 2, 3, 4, 5, 6, 11};
        return {1, 2, 3, 4, 5, 6};
    }
    ConnectionPtr ConnectionOf(const Slice& slice) const {
        auto connection = Connection(L"cos-" + Tag(slice), Named(L"连接"),
                                     m_edited ? Connector::PipeWelded : Connector::PipeGrooved, slice.type);
        static const auto catalogue = ReadCatalogue();
        std::size_t next = m_edited ? 2 : 0;
        for (const int part : PartsOf(slice.type)) {
            auto component = CatalogueComponent(catalogue.at(next++));
            connection->AddFitting(Part{part}, Rule::Undefined, component, 15.5, 300.25);
        }
        return connection;
    }
    /// Those of the largest category.
    static std::vector<CatalogueEntry> ReadCatalogue() {
        std::vector<CatalogueEntry> entries;
        const json sample = SampleFile("components.json");
        for (const json& row : sample.at("components")) {
            if (row.at("categoryCode") == "16401010")
                entries.push_back({vorn::StringUtil::ToWString(row.at("id").get<std::string>()), L"16401010",
                                   row.at("version"), row.at("publicId")});
        }
        return entries;
    }

    void AddSeries(tolm::IProjectSettingSystemType& system, const Slice& of) const {
        for (const Slice& slice : kSeries) {
            if (slice.type == of.type && slice.discipline == of.discipline) {
                auto serie = SerieOf(slice);
                system.AddSystemMaterialSerie(serie);
            }
        }
    }

    bool m_edited;
};

/// One host writes all records and sends them, another one pulls.
class ThereAndBack : public SyncFixture, public testing::WithParamInterface<Stage> {
protected:
    void SetUp() override {
        Open(json::object());
        ASSERT_TRUE(m_writer.Pull());
        WriteAndSend(Stage::Created);
        Fetch();
        if (GetParam() == Stage::Edited) {
            WriteAndSend(Stage::Edited);
            Fetch();
        }
    }

    /// The record of the slice as the other host reads it; no facts where there is not exactly one.
    template <class List> Facts Read(const Slice& slice, List list) {
        m_reader.Api().CollectData(true, {slice.id});
        const auto records = list(m_reader.Api());
        EXPECT_EQ(records.size(), 1U);
        return records.size() == 1 ? FactsOf(*records.front()) : Facts();
    }

    RecordsOf written{GetParam()};

private:
    /// Each host signs in for itself.
    void WriteAndSend(Stage stage) {
        service.OpenSession("P");
        Write(RecordsOf(stage));
        auto& api = m_writer.Api();
        ASSERT_TRUE(api.SendModifiedDataToCloud(false, nullptr));
        ASSERT_TRUE(api.SetLocalVersion(api.GetCloudVersion(L"P")));
    }
    void Fetch() {
        service.OpenSession("P");
        ASSERT_TRUE(m_reader.Pull());
    }

    /// Through the tables, those first that others refer to.
    void Write(const RecordsOf& records) {
        auto& api = m_writer.Api();
        for (const Slice& slice : kMaterials)
            EditTable(Collected(slice).GetMaterialData())->AddMaterial(records.MaterialOf(slice));
        for (const Slice& slice : kSizes)
            EditTable(Collected(slice).GetSizeModuleData())->AddSizeModule(records.SizeOf(slice));
        for (const Slice& slice : kGroups)
            EditTable(Collected(slice).GetMEPMaterialSerieData())->AddSerieGroup(records.GroupOf(slice));
        for (const Slice& slice : kSeries)
            EditTable(Collected(slice).GetMEPMaterialSerieData())->AddSerie(records.SerieOf(slice));
        for (const Slice& slice : kSystems)
            EditTable(Collected(slice).GetSystemTypeData())->AddSystemType(records.SystemOf(slice));
        api.ResetDataTables();
    }
    tolm::ITolmDataset& Collected(const Slice& slice) {
        m_writer.Api().CollectData(true, {slice.id});
        return m_writer.Api();
    }

    HostedDataset m_writer = Dataset(L"writer");
    HostedDataset m_reader = Dataset(L"reader");
};

INSTANTIATE_TEST_SUITE_P(Records, ThereAndBack, testing::Values(Stage::Created, Stage::Edited),
                         [](const auto& stage) { return stage.param == Stage::Created ? "Created" : "Edited"; });

/// Puts another value in place of each fact whose name ends so.
void Lose(Facts& facts, const std::string& ending, const std::string& instead) {
    for (auto& [field, fact] : facts) {
        if (field.ends_with(ending))
            fact = instead;
    }
}

/// An id that each client makes for itself. True when it is there and not the writer's.
bool TakeOwnId(const std::string& field, Facts& expected, Facts& actual) {
    const auto theirs = expected.extract(field);
    const auto own = actual.extract(field);
    return !theirs.empty() && !own.empty() && theirs.mapped() != own.mapped();
}

TEST_P(ThereAndBack, MaterialsOfBothDisciplinesAreWhole) {
    for (const Slice& slice : kMaterials)
        EXPECT_TRUE(Same(FactsOf(*written.MaterialOf(slice)),
                         Read(slice, [](auto& api) { return api.GetMaterialData()->GetMaterialList(); })));
}

TEST_P(ThereAndBack, GroupsOfThreeKindsAreWholeButForTheTimeOfADuctGroup) {
    for (const Slice& slice : kGroups) {
        Facts expected = FactsOf(*written.GroupOf(slice));
        if (slice.type == Type::Duct)
            expected["created"] = "0";
        EXPECT_TRUE(
            Same(expected, Read(slice, [](auto& api) { return api.GetMEPMaterialSerieData()->GetSerieGroupList(); })));
    }
}

class SizeTableThereAndBack : public ThereAndBack {
protected:
    Facts ReadSize(const Slice& slice) {
        return Read(slice, [](auto& api) { return api.GetSizeModuleData()->GetSizeList(); });
    }
    /// What was written, with lengths cut to three digits and the roughness to four.
    Facts Expected(const Slice& slice) const {
        Facts facts = FactsOf(*written.SizeOf(slice));
        const bool isEdited = GetParam() == Stage::Edited;
        if (facts.contains("pipe 1/inner"))
            facts["pipe 1/inner"] = NumberFact(double{isEdited ? 21.062F : 20.062F});
        if (slice.type == Type::Pipe)
            facts["roughness"] = isEdited ? "2" : NumberFact(0.1234);
        return facts;
    }
    static void LoseMaterial(Facts& facts) {
        facts.erase("material");
        facts.erase("material's name");
    }
};

INSTANTIATE_TEST_SUITE_P(Records, SizeTableThereAndBack, testing::Values(Stage::Created, Stage::Edited),
                         [](const auto& stage) { return stage.param == Stage::Created ? "Created" : "Edited"; });

/// A whole number as roughness comes back, since the service writes it with a point.
TEST_P(SizeTableThereAndBack, OfPipesOfBothDisciplinesIsWholeButForItsLastDigits) {
    for (const Slice& slice : {kSizes[0], kSizes[1]})
        EXPECT_TRUE(Same(Expected(slice), ReadSize(slice)));
}

TEST_P(SizeTableThereAndBack, OfDuctsHasAMaterialOfItsOwnUnderTheSameName) {
    Facts expected = Expected(kSizes[2]);
    Facts actual = ReadSize(kSizes[2]);
    EXPECT_TRUE(TakeOwnId("material", expected, actual));
    EXPECT_TRUE(Same(expected, actual));
}

TEST_P(SizeTableThereAndBack, OfTraysLosesItsMaterialAndTheThicknesses) {
    Facts expected = Expected(kSizes[3]);
    LoseMaterial(expected);
    Lose(expected, "/thickness", "0");
    EXPECT_TRUE(Same(expected, ReadSize(kSizes[3])));
}

TEST_P(SizeTableThereAndBack, OfConduitsLosesItsMaterialTheThicknessesAndFractionsOfNominalDiameters) {
    Facts expected = Expected(kSizes[4]);
    LoseMaterial(expected);
    Lose(expected, "/thickness", "0");
    expected["pipe 1/nominal"] = GetParam() == Stage::Edited ? "21" : "20";
    EXPECT_TRUE(Same(expected, ReadSize(kSizes[4])));
}

TEST_P(SizeTableThereAndBack, OfWiresLosesItsMaterialAndHasItsTypeNameAsName) {
    Facts expected = Expected(kSizes[5]);
    LoseMaterial(expected);
    expected["name"] = expected.at("cable type");
    EXPECT_TRUE(Same(expected, ReadSize(kSizes[5])));
}

/// What is lost of the fittings: they serve all sizes, and the routing rule of the key that they stand under.
void LoseOfFittings(Facts& facts) {
    for (auto& [field, fact] : facts) {
        if (const auto slash = field.find('/'); field.ends_with("/rule"))
            fact = facts.at(field.substr(0, slash) + "/part");
    }
    Lose(facts, "/min", NumberFact(1.0));
    Lose(facts, "/max", NumberFact(1'000'000.0));
}

/// Rows of trays and conduits have none of these: they are as in a new series.
void LoseOfElectrical(Facts& facts) {
    const Facts fresh = FactsOf(*Serie(L"", L""));
    for (const char* field : {"min", "max", "junction"})
        facts[field] = fresh.at(field);
    facts["connection's type"] = "0";
}

/// The connection series is made anew by each client and has no name.
TEST_P(ThereAndBack, SeriesOfFiveTablesComeWithAllTheirFittings) {
    for (const Slice& slice : kSeries) {
        SCOPED_TRACE(static_cast<int>(slice.id));
        Facts expected = FactsOf(*written.SerieOf(slice));
        Facts actual = Read(slice, [](auto& api) { return api.GetMEPMaterialSerieData()->GetSerieList(); });
        EXPECT_TRUE(TakeOwnId("connection", expected, actual));
        expected["connection's name"] = TextFact("");
        LoseOfFittings(expected);
        if (slice.discipline == Discipline::Electrical)
            LoseOfElectrical(expected);
        EXPECT_TRUE(Same(expected, actual));
    }
}

TEST_P(ThereAndBack, SystemTypesOfFourTablesAreWholeWithTheirSeriesAndCables) {
    for (const Slice& slice : kSystems)
        EXPECT_TRUE(Same(FactsOf(*written.SystemOf(slice)),
                         Read(slice, [](auto& api) { return api.GetSystemTypeData()->GetSystemTypeList(); })));
}

} // namespace
} // namespace tolmtest
