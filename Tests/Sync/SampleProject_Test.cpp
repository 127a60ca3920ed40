#include "Service/ProjectFile.h"
#include "Service/Service.h"
#include "StoreSupport/StoreFixture.h"
#include "StoreSupport/SyncFixture.h"
#include "Vorn/Text.h"

#include <set>

namespace tolmtest {
namespace {

using nlohmann::json;
using TableId = tolm::TolmProjectSettingTableId;

std::string Utf8(const std::wstring& text) {
    return vorn::StringUtil::ToString(text);
}

/// The sample project in a service, and its tables as the files of the sample tell them.
class SampleProject : public SyncFixture {
protected:
    SampleProject() : tables(SampleFile("project.json").at("tables")) {
        auto& projects = service.Service().Projects();
        projects.Create("tower", "Office tower");
        const auto file = tolm::service::ReadProjectFile(ReadSample("project.json"), SamplePath(""));
        projects.Fill("tower", file.rows, false);
        service.OpenSession("tower", "tower-a");
        for (auto& row : tables["BinaryTable"])
            TakeFileIn(row);
    }

    static std::string ReadSample(const std::string& name) { return tolm::service::ReadWholeFile(SamplePath(name)); }

    /// Applies a change file to the service, and to the tables.
    void ApplySample(const std::string& name) {
        const auto file = tolm::service::ReadChangeFile(ReadSample(name), SamplePath(""));
        version = static_cast<int>(service.Service().Projects().Apply("tower", file.change, file.workunits));
        const json change = SampleFile(name);
        for (const char* part : {"add", "edit"})
            for (const auto& [table, rows] : change.at(part).items())
                for (json row : rows)
                    PutRow(table, std::move(row));
        for (const auto& [table, ids] : change.at("remove").items())
            for (const auto& id : ids)
                RemoveRow(table, id);
    }

    Facts Expected() const { return ExpectedFacts(tables, categories, version); }

    json tables;
    int version = 1;

private:
    static const char* IdKey(const std::string& table) { return table == "BinaryTable" ? "fileName" : "ID"; }

    static void TakeFileIn(json& row) {
        const std::string path = SamplePath(row.at("file"));
        row["data"] = FileFacts(vorn::StringUtil::ToWString(SamplePath("files")))
                          .at("file/" + row.at("file").get<std::string>().substr(sizeof "files"));
    }

    void RemoveRow(const std::string& table, const json& id) {
        auto& rows = tables[table];
        for (auto row = rows.begin(); row != rows.end(); ++row) {
            if (row->at(IdKey(table)) == id) {
                rows.erase(row);
                return;
            }
        }
    }

    void PutRow(const std::string& table, json row) {
        RemoveRow(table, row.at(IdKey(table)));
        if (table == "BinaryTable")
            TakeFileIn(row);
        tables[table].push_back(std::move(row));
    }
};

// --- through the tables --------------------------------------------------------------------------------------------

constexpr TableId kMaterialSlices[] = {TableId::PlumbingPipeMaterials, TableId::HVACPipeMaterials,
                                       TableId::DuctMaterials, TableId::CableTrayMaterials, TableId::ConduitMaterials};
constexpr TableId kSizeSlices[] = {TableId::PlumbingPipeSizes, TableId::HVACPipeSizes, TableId::DuctSizes,
                                   TableId::CableTraySizes,    TableId::ConduitSizes,  TableId::WireSizes};

/// What a "groupName" stands for.
struct Group {
    int type;
    int discipline;
};
const std::map<std::string, Group> kGroups = {
    {"MaterialSeries", {1, 2}},   {"HVACMaterialSeries", {1, 1}}, {"ductSeriesType", {2, 1}},
    {"electricWireType", {5, 3}}, {"electricLinePipe", {4, 3}},   {"cableTray", {3, 3}},
};

/// Text of a row of a list: numbers as the store keeps them.
std::string Numbers(std::initializer_list<float> numbers) {
    std::string text;
    for (const float number : numbers)
        text += " " + NumberFact(number);
    return text;
}

float Cell(const json& row, const char* key) {
    return row.contains(key) ? row.at(key).get<float>() : 0.0F;
}

/// A record read through a table, or a row, as facts under its id.
class Record {
public:
    Record(Facts& facts, std::string id) : m_facts(facts), m_id(std::move(id)) {}
    template <class Value> void Put(const std::string& field, const Value& value) {
        if constexpr (std::is_arithmetic_v<Value>)
            m_facts[m_id + "/" + field] = NumberFact(static_cast<double>(value));
        else
            m_facts[m_id + "/" + field] = value;
    }
    void Row(std::size_t index, const std::string& row) { Put("row " + std::to_string(index), row); }

private:
    Facts& m_facts;
    std::string m_id;
};

template <class Element> void PutHead(Record& record, const Element& element) {
    record.Put("name", Utf8(element.GetName()));
    record.Put("type", static_cast<int>(element.GetMEPType()));
    record.Put("discipline", static_cast<int>(element.GetDisciplineId()));
    record.Put("created", element.GetCreateTime());
}

void PutHead(Record& record, const json& row) {
    const Group& group = kGroups.at(row.at("groupName"));
    record.Put("name", row.at("text").get<std::string>());
    record.Put("type", group.type);
    record.Put("discipline", group.discipline);
    record.Put("created", row.at("CreateTime").get<double>());
}

void PutLists(Record& record, const tolm::IProjectSettingSizeModule& module) {
    std::size_t index = 0;
    for (const auto& size : module.GetPipeSizeList())
        record.Row(index++, Numbers({size.nominalDiameter, size.outerDiameter, size.innerDiameter, size.thickness}));
    for (const auto& size : module.GetDuctSizeList())
        record.Row(index++, Numbers({size.size, size.thickness}));
    for (const auto& spec : module.GetCableSpecificationList())
        record.Row(index++,
                   Utf8(spec.area) + Numbers({static_cast<float>(spec.current), static_cast<float>(spec.temperature)}));
}

std::string ListRow(int type, const json& row) {
    if (type == 5)
        return row.at("area").get<std::string>() + Numbers({Cell(row, "current"), Cell(row, "temperature")});
    if (type == 2 || type == 3)
        return Numbers({Cell(row, "Size"), Cell(row, "Thickness")});
    return Numbers({Cell(row, "DN"), Cell(row, "OD"), Cell(row, "ID"), Cell(row, "Thickness")});
}

/// The values that a size table of this type has beside its list.
void PutValues(Record& record, const tolm::IProjectSettingSizeModule& module) {
    switch (static_cast<int>(module.GetMEPType())) {
    case 1:
        record.Put("material", Utf8(module.GetMaterial()->GetId()));
        record.Put("roughness", module.GetRoughness());
        break;
    case 2:
        record.Put("material's name", Utf8(module.GetMaterial()->GetName()));
        record.Put("shape", static_cast<int>(module.GetDuctShape()));
        record.Put("pressure", static_cast<int>(module.GetPressureGrade()));
        break;
    case 3:
        record.Put("shape", static_cast<int>(module.GetCableTrayShape()));
        break;
    case 5:
        record.Put("cable", Utf8(module.GetCableSpecTypeName()));
        record.Put("metal", static_cast<int>(module.GetCableMaterial()));
        record.Put("temperature", static_cast<int>(module.GetCableEnvironmentTemperature()));
        break;
    default:
        break;
    }
}

void PutValues(Record& record, int type, const json& row) {
    const json& content = row.at("content");
    switch (type) {
    case 1:
        record.Put("material", row.at("parentID").get<std::string>());
        record.Put("roughness", content.at("roughness").get<double>());
        break;
    case 2:
        record.Put("material's name", content.at("series").get<std::string>());
        record.Put("shape", content.at("shape").get<int>());
        record.Put("pressure", content.at("systemPress").get<int>());
        break;
    case 3:
        record.Put("shape", content.at("type").get<int>());
        break;
    case 5:
        record.Put("cable", row.at("text").get<std::string>()); // a cable table bears its name twice
        record.Put("metal", content.at("series").get<int>());
        record.Put("temperature", content.at("currentUseTemperature").get<int>());
        break;
    default:
        break;
    }
}

bool IsMaterial(const json& row) {
    const std::string group = row.at("groupName");
    return (group == "MaterialSeries" || group == "HVACMaterialSeries") && row.at("parentID") == "";
}

Facts SizesOf(const std::vector<const tolm::IProjectSettingSizeModule*>& list) {
    Facts facts;
    for (const auto* module : list) {
        Record record(facts, Utf8(module->GetId()));
        PutHead(record, *module);
        PutValues(record, *module);
        PutLists(record, *module);
    }
    return facts;
}

Facts SizesOf(const json& configTree) {
    Facts facts;
    for (const auto& row : configTree) {
        const auto group = kGroups.find(row.at("groupName"));
        if (group == kGroups.end() || IsMaterial(row))
            continue;
        Record record(facts, row.at("ID"));
        PutHead(record, row);
        PutValues(record, group->second.type, row);
        std::size_t index = 0;
        for (const auto& entry : row.at("content").at("sizeList"))
            record.Row(index++, ListRow(group->second.type, entry));
    }
    return facts;
}

Facts PipeMaterialsOf(const std::vector<const tolm::IProjectSettingMaterial*>& list) {
    Facts facts;
    for (const auto* material : list) {
        if (material->GetMEPType() == tolm::TolmProjectSettingMEPObjectType::Duct)
            continue;
        Record record(facts, Utf8(material->GetId()));
        PutHead(record, *material);
    }
    return facts;
}

Facts PipeMaterialsOf(const json& configTree) {
    Facts facts;
    for (const auto& row : configTree) {
        if (!IsMaterial(row))
            continue;
        Record record(facts, row.at("ID"));
        PutHead(record, row);
    }
    return facts;
}

// --- links ---------------------------------------------------------------------------------------------------------

/// An attribute that holds ids of another class.
struct Link {
    const char* classCode;
    const char* attribute;
    const char* targetClass;
};
constexpr Link kLinks[] = {
    {"PSI", "MaterialId", "MTS"},        {"SMS", "SizeModuleId", "PSI"},     {"SMS", "SerieGroupId", "MSG"},
    {"SMS", "ConnectionSerieId", "COS"}, {"SYS", "MaterialSerieIds", "SMS"}, {"SYS", "CableSpecTypeIds", "PSI"},
    {"CRT", "SystemTypeId", "SYS"},      {"CRT", "WireTypeId", "PSI"},       {"CRT", "ConduitTypeId", "SMS"},
};

std::vector<std::string> LinkedIds(const std::string& fact) {
    const auto text = fact.substr(1, fact.size() - 2);
    if (text.starts_with("["))
        return json::parse(text);
    return {text};
}

/// The links of a store that lead nowhere; counts those that were followed.
std::vector<std::string> BrokenLinks(const Facts& facts, const Link& link, std::size_t& followed) {
    std::vector<std::string> broken;
    for (const auto& [key, fact] : facts) {
        if (!key.starts_with(std::string(link.classCode) + "/") || !key.ends_with(std::string("/") + link.attribute))
            continue;
        for (const auto& id : LinkedIds(fact)) {
            ++followed;
            if (!facts.contains(std::string(link.targetClass) + "/" + id))
                broken.push_back(key + " -> " + id);
        }
    }
    return broken;
}

void ExpectThatLinksResolve(const Facts& facts) {
    for (const auto& link : kLinks) {
        std::size_t followed = 0;
        EXPECT_EQ(BrokenLinks(facts, link, followed), std::vector<std::string>());
        EXPECT_GT(followed, 0U) << link.classCode << " " << link.attribute;
    }
}

// --- tests ---------------------------------------------------------------------------------------------------------

TEST_F(SampleProject, APulledDatasetIsExactlyWhatTheRowsSay) {
    auto dataset = Dataset(L"a");
    EXPECT_TRUE(dataset.Pull());
    EXPECT_EQ(TakeNotifications(), kPulled);
    EXPECT_EQ(TakeLogLines(), std::vector<std::wstring>());
    EXPECT_EQ(Difference(Expected(), dataset.Content()), "");
    ExpectThatLinksResolve(dataset.Content());
}

TEST_F(SampleProject, EveryRowIsTakenIn) {
    auto dataset = Dataset(L"a");
    ASSERT_TRUE(dataset.Pull());
    EXPECT_EQ(SqlValue(dataset.Path(), "SELECT count(*) FROM PSI"), "128");
    EXPECT_EQ(SqlValue(dataset.Path(), "SELECT count(*) FROM MTS"),
              "42"); // 22 of pipes, one for each of 20 duct tables
    EXPECT_EQ(SqlValue(dataset.Path(), "SELECT count(*) FROM MSG"), "15");
    EXPECT_EQ(SqlValue(dataset.Path(), "SELECT count(*) FROM SMS"), "89");
    EXPECT_EQ(SqlValue(dataset.Path(), "SELECT count(*) FROM COS"), "89");
    EXPECT_EQ(SqlValue(dataset.Path(), "SELECT count(*) FROM SYS"), "81");
    EXPECT_EQ(SqlValue(dataset.Path(), "SELECT count(*) FROM CRT"), "32");
}

TEST_F(SampleProject, SizeTablesReadThroughTheTablesAreTheirRows) {
    auto dataset = Dataset(L"a");
    ASSERT_TRUE(dataset.Pull());
    dataset.Api().CollectData(true, {std::begin(kSizeSlices), std::end(kSizeSlices)});
    const auto sizes = dataset.Api().GetSizeModuleData()->GetSizeList();
    EXPECT_EQ(sizes.size(), 128U);
    EXPECT_EQ(Difference(SizesOf(tables.at("ConfigTree")), SizesOf(sizes)), "");
}

TEST_F(SampleProject, MaterialsReadThroughTheTablesAreTheirRows) {
    auto dataset = Dataset(L"a");
    ASSERT_TRUE(dataset.Pull());
    dataset.Api().CollectData(true, {std::begin(kMaterialSlices), std::end(kMaterialSlices)});
    const auto materials = dataset.Api().GetMaterialData()->GetMaterialList();
    EXPECT_EQ(materials.size(), 42U);
    EXPECT_EQ(Difference(PipeMaterialsOf(tables.at("ConfigTree")), PipeMaterialsOf(materials)), "");
}

TEST_F(SampleProject, EachDuctTableHasAMaterialOfItsOwnUnderTheNameOfItsSeries) {
    auto dataset = Dataset(L"a");
    ASSERT_TRUE(dataset.Pull());
    std::multiset<std::string> expected;
    for (const auto& row : tables.at("ConfigTree")) {
        if (row.at("groupName") == "ductSeriesType")
            expected.insert(row.at("content").at("series").get<std::string>());
    }
    std::multiset<std::string> names;
    std::set<std::wstring> ids;
    for (const auto* material : dataset.Api().GetMaterialData(TableId::DuctMaterials)->GetMaterialList()) {
        names.insert(Utf8(material->GetName()));
        ids.insert(material->GetId());
        EXPECT_EQ(material->GetDisciplineId(), tolm::MEPDisciplineId::HVAC);
    }
    EXPECT_EQ(names, expected);
    EXPECT_EQ(ids.size(), expected.size());
}

TEST_F(SampleProject, BinaryFilesAreTheOriginalsByteByByte) {
    auto dataset = Dataset(L"a");
    ASSERT_TRUE(dataset.Pull());
    for (const char* name : {"levels.csv", "naming-rules.txt", "symbols.svg"}) {
        const auto wide = vorn::StringUtil::ToWString(name);
        EXPECT_EQ(FileBytes(dataset.BinaryFolder() + L"/" + wide), ReadSample(std::string("files/") + name));
    }
    EXPECT_EQ(FileFacts(dataset.BinaryFolder()).size(), 3U);
}

TEST_F(SampleProject, ASecondPullFindsNothingToDo) {
    auto dataset = Dataset(L"a");
    ASSERT_TRUE(dataset.Pull());
    const auto before = dataset.Content();
    TakeNotifications();
    EXPECT_FALSE(dataset.Pull());
    EXPECT_EQ(TakeNotifications(), kUpToDate);
    EXPECT_EQ(Difference(before, dataset.Content()), "");
}

/// The tray table that the first change removes: a refresh leaves it, a full load does not have it.
const std::string kRemovedTray = "PSI/0a0f240b-c2e9-58db-b24a-2a345ca60fcb";

Facts WithoutRemovedTray(Facts facts) {
    EXPECT_GT(std::erase_if(facts, [](const auto& fact) { return fact.first.starts_with(kRemovedTray); }), 0U);
    return facts;
}

TEST_F(SampleProject, ChangesPulledOneByOneGiveWhatAFullLoadGivesButForTheRemovedTray) {
    auto dataset = Dataset(L"kept");
    ASSERT_TRUE(dataset.Pull());
    for (const std::string change : {"change-1.json", "change-2.json"}) {
        ApplySample(change);
        EXPECT_TRUE(dataset.Pull());
        auto fresh = Dataset(L"fresh after " + vorn::StringUtil::ToWString(change));
        EXPECT_TRUE(fresh.Pull());
        EXPECT_EQ(Difference(Expected(), fresh.Content()), "");
        EXPECT_EQ(Difference(fresh.Content(), WithoutRemovedTray(dataset.Content())), "");
        ExpectThatLinksResolve(fresh.Content());
    }
    EXPECT_EQ(version, 3);
    EXPECT_EQ(TakeLogLines(), std::vector<std::wstring>());
}

TEST_F(SampleProject, BothChangesPulledAtOnceGiveWhatAFullLoadGivesButForTheRemovedTray) {
    auto dataset = Dataset(L"kept");
    ASSERT_TRUE(dataset.Pull());
    ApplySample("change-1.json");
    ApplySample("change-2.json");
    EXPECT_TRUE(dataset.Pull());
    EXPECT_EQ(Difference(Expected(), WithoutRemovedTray(dataset.Content())), "");
}

} // namespace
} // namespace tolmtest
