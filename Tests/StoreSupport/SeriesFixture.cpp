#include "StoreSupport/SeriesFixture.h"

#include "Host/Categories.h"
#include "MepDatabase/ComponentCache.h"
#include "Vorn/Text.h"

#include <bit>
#include <ostream>

namespace tolmtest {
namespace {

class PlainComponent final : public tolm::ITolmProjectSettingComponent {
public:
    PlainComponent(wstring id, wstring category, bool canBeCloned)
        : m_id(std::move(id)), m_category(std::move(category)), m_canBeCloned(canBeCloned) {}
    ComponentPtr Clone() const override { return m_canBeCloned ? Component(m_id, m_category) : ComponentPtr(); }
    wstring GetId() const override { return m_id; }
    wstring GetCategoryCode() const override { return m_category; }
    int GetVersion() const override { return 1; }
    __int64 GetPublicComponentId() const override { return 0; }
    wstring GetComponentTypeId() const override { return {}; }
    wstring GetName() const override { return {}; }
    std::map<wstring, wstring> GetAttributes() const override { return {}; }

private:
    wstring m_id;
    wstring m_category;
    bool m_canBeCloned;
};

std::string LittleEndian(std::uint32_t bits) {
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes += static_cast<char>((bits >> (8 * i)) & 0xFFU);
    return bytes;
}

std::string Padded(const std::string& text, std::size_t width) {
    std::string padded(width, '\0');
    text.copy(padded.data(), width);
    return padded;
}

ComponentReads::Make g_make = nullptr;
std::vector<wstring> g_categories;
std::vector<wstring> g_paths;

bool CountRead(const wstring& path, const tolm::ITolmCategoryInfo* category, const std::map<wstring, wstring>&,
               std::vector<ComponentPtr>& result, bool) {
    g_paths.push_back(path);
    g_categories.push_back(category->GetCode());
    for (auto& component : g_make(category->GetCode()))
        result.push_back(std::move(component));
    return true;
}

tolm::TolmComponentData ComponentData(const wstring& id, const wstring& category) {
    tolm::TolmComponentData component;
    component.id = id;
    component.categoryCode = category;
    return component;
}

} // namespace

ComponentPtr Component(const wstring& id, const wstring& category, bool canBeCloned) {
    return vorn::MakeOwner<PlainComponent>(id, category, canBeCloned);
}

void PrintTo(const Fitting& fitting, std::ostream* out) {
    *out << static_cast<int>(fitting.part) << ' ' << static_cast<int>(fitting.rule) << ' '
         << vorn::StringUtil::ToString(fitting.component) << ' ' << fitting.min << ' ' << fitting.max;
}

std::vector<Fitting> FittingsOf(const tolm::IProjectSettingConnectionSerie& serie) {
    std::vector<Fitting> fittings;
    for (const auto& product : serie.GetProducts())
        fittings.push_back({product.fittingPartType, product.routingGroup,
                            product.m_pComponent != nullptr ? product.m_pComponent->GetId() : L"none",
                            product.firstSizeBound, product.secondSizeBound});
    return fittings;
}

ConnectionPtr Connection(wstring id, wstring name, Connector type, Type objectType) {
    auto connection = tolm::ITolmDataSetFactory::Get()->CreateConnectionSerie();
    connection->SetId(id);
    connection->SetName(name);
    connection->SetConnectionType(type);
    connection->SetObjectType(objectType);
    return connection;
}

void AddFitting(tolm::IProjectSettingConnectionSerie& serie, const Fitting& fitting, const wstring& category) {
    auto component = Component(fitting.component, category);
    serie.AddFitting(fitting.part, fitting.rule, component, fitting.min, fitting.max);
}

ConnectionPtr LongConnection(wstring id, int count) {
    auto connection = Connection(std::move(id));
    for (int i = 0; i < count; ++i)
        AddFitting(*connection, {.component = L"e1"});
    return connection;
}

GroupPtr Group(wstring id, wstring name, Type type, Discipline discipline, __int64 createTime) {
    auto group = tolm::ITolmDataSetFactory::Get()->CreateMEPMaterialSerieGroup();
    group->SetId(id);
    group->SetName(name);
    group->SetMEPType(type);
    group->SetDisciplineId(discipline);
    group->SetCreateTime(createTime);
    return group;
}

SeriePtr Serie(wstring id, wstring name, Type type, Discipline discipline) {
    auto serie = tolm::ITolmDataSetFactory::Get()->CreateMEPMaterialSerie();
    serie->SetId(id);
    serie->SetName(name);
    serie->SetMEPType(type);
    serie->SetDisciplineId(discipline);
    return serie;
}

SystemTypePtr SystemType(wstring id, wstring name, Type type, Discipline discipline) {
    auto systemType = tolm::ITolmDataSetFactory::Get()->CreateSystemType();
    systemType->SetId(id);
    systemType->SetName(name);
    systemType->SetMEPType(type);
    systemType->SetDisciplineId(discipline);
    return systemType;
}

std::string PackedFittingBytes(const std::string& category, int part, int rule, const std::string& product, float min,
                               float max) {
    return Padded(category, 50) + LittleEndian(static_cast<std::uint32_t>(part)) +
           LittleEndian(static_cast<std::uint32_t>(rule)) + Padded(product, 40) +
           LittleEndian(std::bit_cast<std::uint32_t>(min)) + LittleEndian(std::bit_cast<std::uint32_t>(max));
}

std::string Hex(const std::string& bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const char byte : bytes) {
        text += kDigits[static_cast<unsigned char>(byte) >> 4];
        text += kDigits[static_cast<unsigned char>(byte) & 0xF];
    }
    return text;
}

ComponentReads::ComponentReads(Make make) {
    g_make = make;
    g_categories.clear();
    g_paths.clear();
    tolm::ComponentCache::SetReader(&CountRead);
}

ComponentReads::~ComponentReads() {
    tolm::ComponentCache::SetReader(nullptr);
}

const std::vector<wstring>& ComponentReads::Categories() const {
    return g_categories;
}

const std::vector<wstring>& ComponentReads::Paths() const {
    return g_paths;
}

void SeriesFixture::SetUp() {
    const wstring nothing;
    ASSERT_TRUE(tolm::TolmComponentSqlUtil::Import(
        components, {{L"d", L"discipline", L"discipline"}},
        {{L"elbow", nothing, L"d", L"弯头", L"elbow"}, {L"tee", nothing, L"d", L"三通", L"tee"}},
        {ComponentData(L"e1", L"elbow"), ComponentData(L"e2", L"elbow"), ComponentData(L"t1", L"tee"),
         ComponentData(L"t2", L"tee")}));
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(components));
}

void SeriesFixture::TearDown() {
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr);
}

bool SeriesFixture::Write(ConnectionPtr connection) {
    auto serie = Serie(L"of " + connection->GetId());
    serie->SetConnectionSerie(connection);
    return Write(serie);
}

std::vector<SeriePtr> SeriesFixture::Series(Type type, Discipline discipline) {
    std::vector<SeriePtr> list;
    EXPECT_TRUE(util.ReadMEPMaterialSerieList(path, ddq, components, type, discipline, list));
    return list;
}

SeriePtr SeriesFixture::Read(const wstring& id) {
    SeriePtr serie;
    EXPECT_TRUE(util.ReadMEPMaterialSerie(path, ddq, components, id, serie));
    return serie ? std::move(serie) : Serie(L"none");
}

std::vector<ConnectionPtr> SeriesFixture::Connections(Connector type) {
    std::vector<ConnectionPtr> list;
    const bool found = util.ReadConectionSerieList(path, ddq, components, type, list);
    EXPECT_EQ(found, !list.empty());
    return list;
}

void SeriesFixture::SetFittingList(const wstring& id, const std::string& bytes) {
    Sql(path, "update COS set FittingList = x'" + Hex(bytes) + "' where Id = '" + vorn::StringUtil::ToString(id) + "'");
}

std::optional<std::string> SeriesFixture::FittingList(const wstring& id) {
    const std::string bytes =
        SqlValue(path, "select FittingList from COS where Id = '" + vorn::StringUtil::ToString(id) + "'");
    return bytes == "NULL" ? std::nullopt : std::optional(bytes);
}

} // namespace tolmtest
