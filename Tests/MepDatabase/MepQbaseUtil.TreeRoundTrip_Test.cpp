#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/SeriesFixture.h"
#include "Vorn/Text.h"

#include <rapidcheck.h>

#include <algorithm>
#include <limits>
#include <map>
#include <set>

namespace {

using namespace tolm;
using namespace tolmtest;

/// Text of any characters but zero.
wstring AnyText(int longest) {
    const auto character =
        rc::gen::oneOf(rc::gen::inRange(1, 0x80), rc::gen::inRange(0x80, 0xD800), rc::gen::inRange(0xE000, 0x110000));
    const auto codes = *rc::gen::resize(longest, rc::gen::container<std::vector<int>>(character));
    wstring text;
    for (const int code : codes)
        text += static_cast<wchar_t>(code);
    return text;
}

template <class Enum> Enum AnyShort() {
    return static_cast<Enum>(*rc::gen::arbitrary<short>());
}

__int64 AnyTime() {
    return *rc::gen::inRange<__int64>(-(1LL << 53), (1LL << 53) + 1);
}

bool Chance() {
    return *rc::gen::arbitrary<bool>();
}

/// A fitting of the catalogue, of another one, or with a text that does not fit.
void AddAnyFitting(IProjectSettingConnectionSerie& serie) {
    const auto component =
        *rc::gen::element<wstring>(L"e1", L"e2", L"t1", L"t2", L"unknown", wstring(41, L'x'), wstring(20, L'品'));
    const auto category = *rc::gen::element<wstring>(L"elbow", L"elbow", L"tee");
    AddFitting(serie,
               {static_cast<Part>(*rc::gen::arbitrary<std::int32_t>()), static_cast<Rule>(*rc::gen::arbitrary<int>()),
                component, *rc::gen::arbitrary<double>(), *rc::gen::arbitrary<double>()},
               category);
}

ConnectionPtr AnyConnection(const wstring& id) {
    auto connection = Connection(id, AnyText(30), AnyShort<Connector>(), AnyShort<Type>());
    for (int left = *rc::gen::inRange(0, 12); left > 0; --left)
        AddAnyFitting(*connection);
    return connection;
}

SizeModulePtr AnySizes(const wstring& id, Type type, Discipline discipline) {
    auto module = SizeModule(id, AnyText(20), type, discipline, AnyTime());
    for (int left = *rc::gen::inRange(0, 5); left > 0; --left) {
        module->AddPipeSize({1.0F, 2.0F, *rc::gen::arbitrary<float>(), 4.0F});
        module->AddDuctSize({*rc::gen::arbitrary<float>(), 1.0F});
    }
    if (Chance())
        module->SetMaterial(Material(L"m", AnyText(20), type, discipline));
    return module;
}

/// A series with any of its parts; some of the size modules are stored and some are not.
SeriePtr AnySerie(const wstring& id, Type type, Discipline discipline) {
    auto serie = Serie(id, AnyText(30), type, discipline);
    serie->SetMinSize(*rc::gen::arbitrary<double>());
    serie->SetMaxSize(*rc::gen::arbitrary<double>());
    serie->SetCreateTime(AnyTime());
    serie->SetJunctionType(AnyShort<PreferredJunctionType>());
    if (Chance()) {
        auto sizes = AnySizes(L"sizes of " + id, type, discipline);
        serie->SetSizeModule(sizes);
    }
    if (Chance()) {
        auto connection = AnyConnection(L"connection of " + id);
        serie->SetConnectionSerie(connection);
    }
    if (Chance())
        serie->SetSerieGroup(
            Group(L"group of " + id, AnyText(20), AnyShort<Type>(), AnyShort<Discipline>(), AnyTime()));
    return serie;
}

wstring Cut(const wstring& text, std::size_t bytes) {
    const std::string narrow = vorn::StringUtil::ToString(text);
    return vorn::StringUtil::ToWString(vorn::StringUtil::CutUtf8(narrow, bytes));
}

/// What comes back of fittings: those of the catalogue's components in the category of the first that is read.
std::vector<Fitting> Kept(const IProjectSettingConnectionSerie& connection) {
    const std::map<wstring, std::set<wstring>> catalogue = {{L"elbow", {L"e1", L"e2"}}, {L"tee", {L"t1", L"t2"}}};
    std::vector<Fitting> kept;
    wstring category;
    for (const auto& product : connection.GetProducts()) {
        if (static_cast<int>(product.fittingPartType) < 0)
            continue;
        if (category.empty())
            category = product.m_pComponent->GetCategoryCode();
        const wstring component = Cut(product.m_pComponent->GetId(), 40);
        if (catalogue.at(category).contains(component))
            kept.push_back({product.fittingPartType, product.routingGroup, component});
    }
    return kept;
}

double AsFloat(double value) {
    constexpr double most = std::numeric_limits<float>::max();
    return static_cast<double>(static_cast<float>(std::clamp(value, -most, most)));
}

void CheckConnection(const IProjectSettingConnectionSerie* read, const IProjectSettingConnectionSerie* written) {
    RC_ASSERT((read == nullptr) == (written == nullptr));
    if (read == nullptr)
        return;
    RC_ASSERT(read->GetId() == written->GetId());
    RC_ASSERT(read->GetName() == written->GetName());
    RC_ASSERT(read->GetConnectionType() == written->GetConnectionType());
    RC_ASSERT(read->GetObjectType() == written->GetObjectType());
    RC_ASSERT(FittingsOf(*read) == Kept(*written));
}

void CheckGroup(const IProjectSettingMEPMaterialSerieGroup* read, const IProjectSettingMEPMaterialSerieGroup* written) {
    RC_ASSERT((read == nullptr) == (written == nullptr));
    if (read == nullptr)
        return;
    RC_ASSERT(read->GetId() == written->GetId());
    RC_ASSERT(read->GetName() == written->GetName());
    RC_ASSERT(read->GetMEPType() == written->GetMEPType());
    RC_ASSERT(read->GetDisciplineId() == written->GetDisciplineId());
    RC_ASSERT(read->GetCreateTime() == 0);
}

void CheckSizes(const IProjectSettingSizeModule* read, const IProjectSettingSizeModule* written) {
    RC_ASSERT((read == nullptr) == (written == nullptr));
    if (read == nullptr)
        return;
    RC_ASSERT(read->GetId() == written->GetId());
    RC_ASSERT(read->GetName() == written->GetName());
    if (written->GetMEPType() == Type::Pipe)
        RC_ASSERT(read->GetPipeSizeList() == written->GetPipeSizeList());
    else
        RC_ASSERT(read->GetDuctSizeList() == written->GetDuctSizeList());
    RC_ASSERT((read->GetMaterial() == nullptr) == (written->GetMaterial() == nullptr));
}

void CheckFields(const IProjectSettingMEPMaterialSerie& read, const IProjectSettingMEPMaterialSerie& written) {
    RC_ASSERT(read.GetId() == written.GetId());
    RC_ASSERT(read.GetName() == written.GetName());
    RC_ASSERT(read.GetMinSize() == AsFloat(written.GetMinSize()));
    RC_ASSERT(read.GetMaxSize() == AsFloat(written.GetMaxSize()));
    RC_ASSERT(read.GetMEPType() == written.GetMEPType());
    RC_ASSERT(read.GetDisciplineId() == written.GetDisciplineId());
    RC_ASSERT(read.GetCreateTime() == written.GetCreateTime());
    RC_ASSERT(read.GetJunctionType() == written.GetJunctionType());
}

class TreeRoundTrip : public SeriesFixture {
protected:
    void Check(const IProjectSettingMEPMaterialSerie& read, const IProjectSettingMEPMaterialSerie& written,
               bool sizesAreStored) {
        CheckFields(read, written);
        CheckConnection(read.GetConnectionSerie(), written.GetConnectionSerie());
        CheckGroup(read.GetSerieGroup(), written.GetSerieGroup());
        CheckSizes(read.GetSizeModule(), sizesAreStored ? written.GetSizeModule() : nullptr);
    }
};

TEST_F(TreeRoundTrip, OfAnySeriesLosesOnlyWhatTheStoreDoesNotKeep) {
    const bool holds = rc::check([this] {
        CQbase::removeStore(path);
        const Type type = *rc::gen::element(Type::Pipe, Type::Duct);
        const Discipline discipline = type == Type::Duct ? Discipline::HVAC : Discipline::Plumbing;
        const bool storeSizes = Chance();
        std::vector<SeriePtr> written;
        for (int count = *rc::gen::inRange(1, 5); count > 0; --count) {
            written.push_back(AnySerie(L"s" + std::to_wstring(count), type, discipline));
            const IProjectSettingSizeModule* sizes = written.back()->GetSizeModule();
            if (storeSizes && sizes != nullptr)
                RC_ASSERT(util.WriteSizeModule(path, ddq, sizes));
            RC_ASSERT(Write(written.back()));
        }
        std::vector<SeriePtr> list;
        RC_ASSERT(util.ReadMEPMaterialSerieList(path, ddq, components, type, discipline, list));
        RC_ASSERT(list.size() == written.size());
        for (std::size_t i = 0; i < list.size(); ++i)
            Check(*list[i], *written[i], storeSizes);
    });
    EXPECT_TRUE(holds);
}

TEST_F(TreeRoundTrip, OfAnySystemTypesKeepsTheSeriesThatStand) {
    const bool holds = rc::check([this] {
        CQbase::removeStore(path);
        std::vector<SeriePtr> standing;
        for (int count = *rc::gen::inRange(0, 6); count > 0; --count) {
            standing.push_back(AnySerie(L"s" + std::to_wstring(count), Type::Pipe, Discipline::Plumbing));
            RC_ASSERT(Write(standing.back()));
        }
        std::vector<std::vector<const IProjectSettingMEPMaterialSerie*>> expected;
        const int systems = *rc::gen::inRange(1, 5);
        for (int i = 0; i < systems; ++i) {
            auto systemType = SystemType(L"x" + std::to_wstring(i), AnyText(20));
            auto& links = expected.emplace_back();
            for (int left = *rc::gen::inRange(0, 8); left > 0; --left) {
                const auto which = static_cast<std::size_t>(*rc::gen::inRange(0, 8));
                auto link = Serie(which < standing.size() ? standing[which]->GetId() : L"gone");
                if (which < standing.size())
                    links.push_back(standing[which].get());
                systemType->AddSystemMaterialSerie(link);
            }
            RC_ASSERT(Write(systemType));
        }
        std::vector<SystemTypePtr> list;
        RC_ASSERT(util.ReadSystemTypeList(path, ddq, components, Discipline::Plumbing, Type::Pipe, list));
        RC_ASSERT(list.size() == expected.size());
        for (std::size_t i = 0; i < list.size(); ++i) {
            const auto series = list[i]->GetSystemMaterialSerieList();
            RC_ASSERT(series.size() == expected[i].size());
            for (std::size_t j = 0; j < series.size(); ++j)
                Check(*series[j], *expected[i][j], false);
        }
    });
    EXPECT_TRUE(holds);
}

} // namespace
