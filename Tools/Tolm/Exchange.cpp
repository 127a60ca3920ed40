#include "Tolm/Exchange.h"

#include "Tolm/BalancingMethods.h"
#include "Tolm/Components.h"
#include "Tolm/JsonFields.h"

#include "Host/Components.h"
#include "Host/Session.h"
#include "Vorn/Guid.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace tolmcli {
namespace {

using Json = nlohmann::ordered_json;
using vorn::StringUtil;
using Template = tolm::ITolmProjectSettingCircuitTemplate;
using Insulation = tolm::DataSetInsulationSerie;
using Sizing = tolm::DataSetSizingMethod;
using Product = tolm::TolmCombinedProduct;
using Reference = tolm::TolmComponentReference;

// --- the members of each kind
// -----------------------------------------------------------------------------------------

template <auto Getter> Json SwitchesOf(const Template& circuit) {
    Json texts = Json::array();
    for (int position = 0; position < 3; ++position)
        texts.push_back(StringUtil::ToString((circuit.*Getter)(position)));
    return texts;
}

template <auto Setter> void SetSwitches(Template& circuit, const Json& value) {
    const auto texts = value.get<std::vector<std::string>>();
    if (texts.size() > 3)
        throw Failure("a template has three switches at most");
    for (std::size_t i = 0; i < texts.size(); ++i)
        (circuit.*Setter)(static_cast<int>(i), StringUtil::ToWString(texts[i]));
}

template <auto Getter, auto Setter> constexpr JsonField<Template> Switches(const char* key) {
    return {key, &SwitchesOf<Getter>, &SetSwitches<Setter>};
}

template <auto Getter> constexpr JsonField<Template> Resolved(const char* key) {
    return {key, [](const Template& circuit) { return Json(StringUtil::ToString((circuit.*Getter)())); }, nullptr};
}

constexpr JsonField<Template> kTemplate[] = {
    jsonfield::Text<Template, &Template::GetId, &Template::SetId>("id"),
    jsonfield::Text<Template, &Template::GetSystemTypeName, &Template::SetSystemTypeName>("systemTypeName"),
    jsonfield::Text<Template, &Template::GetSystemTypeId, &Template::SetSystemTypeId>("systemTypeId"),
    jsonfield::Number<Template, &Template::GetSystemClassification, &Template::SetSystemClassification>(
        "systemClassification"),
    Switches<&Template::GetSwitchComponentId, &Template::SetSwitchComponentId>("switchIds"),
    Switches<&Template::GetSwitchComponentTypeName, &Template::SetSwitchComponentTypeName>("switchTypes"),
    jsonfield::Number<Template, &Template::GetPhase, &Template::SetPhase>("phase"),
    jsonfield::Text<Template, &Template::GetFireProtectionMaterial, &Template::SetFireProtectionnMaterial>(
        "fireProtection"),
    jsonfield::Text<Template, &Template::GetWireTypeId, &Template::SetWireTypeId>("wireTypeId"),
    Resolved<&Template::GetWireTypeName>("wireType"),
    jsonfield::Text<Template, &Template::GetWireSpec, &Template::SetWireSpec>("wireSpec"),
    jsonfield::Text<Template, &Template::GetWireCount, &Template::SetWireCount>("wireCount"),
    jsonfield::Text<Template, &Template::GetConduitTypeId, &Template::SetConduitTypeId>("conduitTypeId"),
    Resolved<&Template::GetConduitTypeName>("conduitType"),
    jsonfield::Number<Template, &Template::GetConduitSizeDn, &Template::SetConduitSizeDn>("conduitDN"),
    jsonfield::Number<Template, &Template::GetIsApply, &Template::SetIsApply>("isApply"),
    jsonfield::Text<Template, &Template::GetLayingMode, &Template::SetLayingMode>("layingMode"),
};

std::int16_t Short(const Json& value) {
    const auto number = jsonfield::Whole(value);
    if (number < std::numeric_limits<std::int16_t>::min() || number > std::numeric_limits<std::int16_t>::max())
        throw Failure("a number of 16 bits is wanted, not " + value.dump());
    return static_cast<std::int16_t>(number);
}

/// The store gives all sizes back in one list; circular entries have no second size, rectangular ones do.
template <bool Rectangular> Json SizesOf(const Insulation& serie) {
    Json sizes = Json::array();
    for (const auto& size : serie.GetCircularMaxSizes()) {
        if (Rectangular && size.secondSize != 0)
            sizes.push_back({size.firstSize, size.secondSize, size.thirdSize});
        else if (!Rectangular && size.secondSize == 0)
            sizes.push_back({size.firstSize, size.thirdSize});
    }
    return sizes;
}

void SetCircularSizes(Insulation& serie, const Json& value) {
    for (const auto& size : value)
        serie.AddCircularSize({Short(size.at(0)), 0, Short(size.at(1))});
}

void SetRectangularSizes(Insulation& serie, const Json& value) {
    for (const auto& size : value)
        serie.AddRectSize({Short(size.at(0)), Short(size.at(1)), Short(size.at(2))});
}

constexpr JsonField<Insulation> kInsulation[] = {
    jsonfield::Text<Insulation, &Insulation::GetId, &Insulation::SetId>("id"),
    jsonfield::Text<Insulation, &Insulation::GetCode, &Insulation::SetCode>("code"),
    jsonfield::Text<Insulation, &Insulation::GetDescription, &Insulation::SetDescription>("description"),
    jsonfield::Number<Insulation, &Insulation::GetDisciplineId, &Insulation::SetDisciplineType>("discipline"),
    jsonfield::Number<Insulation, &Insulation::GetInsulationType, &Insulation::SetInsulationType>("type"),
    {"circularSizes", &SizesOf<false>, &SetCircularSizes},
    {"rectangularSizes", &SizesOf<true>, &SetRectangularSizes},
};

Json StepsOf(const Sizing& method) {
    Json steps = Json::array();
    for (const auto& step : method.GetDimensionMethods())
        steps.push_back({step.methodKind, step.firstValue, step.secondValue});
    return steps;
}

void SetSteps(Sizing& method, const Json& value) {
    for (const auto& step : value)
        method.AddDimensionMethod({Short(step.at(0)), step.at(1).get<float>(), step.at(2).get<float>()});
}

constexpr JsonField<Sizing> kSizing[] = {
    jsonfield::Text<Sizing, &Sizing::GetId, &Sizing::SetId>("id"),
    jsonfield::Text<Sizing, &Sizing::GetCode, &Sizing::SetCode>("code"),
    jsonfield::Text<Sizing, &Sizing::GetDesc, &Sizing::SetDesc>("description"),
    jsonfield::Number<Sizing, &Sizing::GetMethodType, &Sizing::SetMethodType>("type"),
    jsonfield::Flag<Sizing, &Sizing::GetKeepConnectTerminalSize, &Sizing::SetKeepConnectTerminalSize>(
        "keepConnectTerminalSize"),
    jsonfield::Flag<Sizing, &Sizing::GetUseStaticRegain, &Sizing::SetUseStaticRegain>("useStaticRegain"),
    jsonfield::Real<Sizing, &Sizing::GetMinWPerHRatio, &Sizing::SetMinWPerHRatio>("minWidthPerHeight"),
    {"steps", &StepsOf, &SetSteps},
};

using Balancing = tolm::DataSetBalancingMethod;

/// The store keeps no discipline of what is written here; one that came from elsewhere is told.
constexpr JsonField<Balancing> kBalancing[] = {
    jsonfield::Text<Balancing, &Balancing::GetId, &Balancing::SetId>("id"),
    jsonfield::Text<Balancing, &Balancing::GetName, &Balancing::SetName>("name"),
    jsonfield::Text<Balancing, &Balancing::GetDesc, &Balancing::SetDesc>("description"),
    {"discipline", [](const Balancing& method) { return Json(static_cast<int>(method.disciplineId())); }, nullptr},
    jsonfield::Real<Balancing, &Balancing::GetDev1DpMin, &Balancing::SetDev1Min>("device1PressureMin"),
    jsonfield::Real<Balancing, &Balancing::GetDev1DpMax, &Balancing::SetDev1Max>("device1PressureMax"),
    jsonfield::Real<Balancing, &Balancing::GetDev2DpMin, &Balancing::SetDev2Min>("device2PressureMin"),
    jsonfield::Real<Balancing, &Balancing::GetDev2DpMax, &Balancing::SetDev2Max>("device2PressureMax"),
    {"throttling1Min", [](const Balancing& method) { return Json(method.GetThrottlingLimit1Min()); },
     [](Balancing& method, const Json& value) { method.SetThrottlingLimit1Min(Short(value)); }},
    {"throttling1Max", [](const Balancing& method) { return Json(method.GetThrottlingLimit1Max()); },
     [](Balancing& method, const Json& value) { method.SetThrottlingLimit1Max(Short(value)); }},
    {"throttling2Min", [](const Balancing& method) { return Json(method.GetThrottlingLimit2Min()); },
     [](Balancing& method, const Json& value) { method.SetThrottlingLimit2Min(Short(value)); }},
    {"throttling2Max", [](const Balancing& method) { return Json(method.GetThrottlingLimit2Max()); },
     [](Balancing& method, const Json& value) { method.SetThrottlingLimit2Max(Short(value)); }},
    jsonfield::Flag<Balancing, &Balancing::GetIsWarningNearRoot, &Balancing::SetIsWarningNearRoot>("warningNearRoot"),
};

constexpr JsonField<Reference> kReference[] = {
    jsonfield::TextMember<Reference, &Reference::categoryStandardCode>("category"),
    jsonfield::TextMember<Reference, &Reference::componentId>("component"),
    jsonfield::TextMember<Reference, &Reference::componentTypeId>("componentType"),
    jsonfield::TextMember<Reference, &Reference::categoryName>("categoryName"),
    jsonfield::TextMember<Reference, &Reference::categoryEnglishName>("categoryEnglishName"),
};

template <Reference Product::*Part> constexpr JsonField<Product> PartField(const char* key) {
    return {key, [](const Product& product) { return ToJson(product.*Part, kReference); },
            [](Product& product, const Json& value) { FromJson(value, product.*Part, kReference); }};
}

Json ComponentsOf(const Product& product) {
    Json list = Json::array();
    for (const auto& component : product.components)
        list.push_back(ToJson(component, kReference));
    return list;
}

void SetComponents(Product& product, const Json& value) {
    for (const auto& entry : value)
        FromJson(entry, product.components.emplace_back(), kReference);
}

constexpr JsonField<Product> kProduct[] = {
    jsonfield::TextMember<Product, &Product::Id>("id"),
    jsonfield::TextMember<Product, &Product::Name>("name"),
    jsonfield::TextMember<Product, &Product::categoryCode>("category"),
    jsonfield::NumberMember<Product, &Product::spacing>("spacing"),
    {"components", &ComponentsOf, &SetComponents},
    PartField<&Product::equipment>("equipment"),
    PartField<&Product::supplyAirTerminal>("supplyAirTerminal"),
    PartField<&Product::returnAirTerminal>("returnAirTerminal"),
    jsonfield::TextMember<Product, &Product::supplySystemTypeId>("supplySystemTypeId"),
    jsonfield::RealMember<Product, &Product::supplyHoseLength>("supplyHoseLength"),
    jsonfield::NumberMember<Product, &Product::supplyAirTerminalNumber>("supplyAirTerminalNumber"),
    jsonfield::RealMember<Product, &Product::supplyAirTerminalDist1>("supplyAirTerminalDist1"),
    jsonfield::RealMember<Product, &Product::supplyAirTerminalDist2>("supplyAirTerminalDist2"),
    jsonfield::TextMember<Product, &Product::supplyDuctTypeId>("supplyDuctTypeId"),
    jsonfield::TextMember<Product, &Product::returnSystemTypeId>("returnSystemTypeId"),
    jsonfield::TextMember<Product, &Product::returnDuctTypeId>("returnDuctTypeId"),
    jsonfield::RealMember<Product, &Product::returnHoseLength>("returnHoseLength"),
};

// --- reading, writing and removing
// ------------------------------------------------------------------------------------

std::wstring TextAt(const Json& record, const char* key) {
    return StringUtil::ToWString(record.value(key, std::string()));
}

/// True where what is shared at once has somewhere to go.
bool IsShared(const Workplace&) {
    const auto* session = tolm::CollaborationProjectSettingForPS::Instance();
    return session != nullptr && !session->GetWorkingProjectId().empty();
}

/// The library says a success in a message; without one the record stays here alone.
void FailUnlessTaken(Workplace& place, bool taken) {
    if (!IsShared(place) || taken)
        return;
    place.FailOnFaults("stored here, but the service did not take it");
    throw Failure("stored here, but the service did not take it");
}

tolm::ICircuitTemplateData& Templates(Workplace& place) {
    place.Dataset().ResetDataTables();
    place.Dataset().CollectData(false, {tolm::TolmProjectSettingTableId::CircuitTemplates});
    return *tolm::EditTable(place.Dataset().GetCircuitTemplateData());
}

Json ReadTemplates(Workplace& place) {
    Json list = Json::array();
    for (const auto* circuit : Templates(place).GetCircuitTemplateList())
        list.push_back(ToJson(*circuit, kTemplate));
    return list;
}

void WriteTemplates(Workplace& place, const Json& records) {
    std::vector<vorn::OwnerPtr<Template>> owners;
    std::vector<const Template*> list;
    for (const auto& record : records) {
        owners.push_back(tolm::ITolmDataSetFactory::Get()->CreateCircuitTemplate());
        FromJson(record, *owners.back(), kTemplate);
        list.push_back(owners.back().get());
    }
    auto& table = Templates(place);
    place.FailUnlessChangeable("nothing was stored");
    table.AddCircuitTemplateListToDB(list);
    FailUnlessTaken(place, !place.Heard().TakeMessages().empty());
    place.FailOnFaults("the templates were not stored");
}

void RemoveTemplate(Workplace& place, const Json& record) {
    const auto circuit = tolm::ITolmDataSetFactory::Get()->CreateCircuitTemplate();
    std::wstring id = TextAt(record, "id");
    circuit->SetId(id);
    auto& table = Templates(place);
    place.FailUnlessChangeable("nothing was deleted");
    table.DeleteCircuitTemplateList({circuit.get()});
    FailUnlessTaken(place, !place.Heard().TakeMessages().empty());
    place.FailOnFaults("the template was not deleted");
}

/// Any table gives the way to the methods, which stand in none.
tolm::TolmBaseDesignData& Methods(Workplace& place) {
    place.Dataset().CollectData(false, {tolm::TolmProjectSettingTableId::PlumbingPipeMaterials});
    auto* base = dynamic_cast<tolm::TolmBaseDesignData*>(tolm::EditTable(place.Dataset().GetMaterialData()));
    if (base == nullptr)
        throw Failure("the dataset gives no way to the design methods");
    return *base;
}

constexpr std::array kDisciplines{tolm::MEPDisciplineId::HVAC, tolm::MEPDisciplineId::Plumbing,
                                  tolm::MEPDisciplineId::Electrical};

Json ReadInsulation(Workplace& place) {
    auto& methods = Methods(place);
    Json list = Json::array();
    for (const auto discipline : kDisciplines) {
        for (const auto type : {tolm::TolmInsulationSerieType::Duct, tolm::TolmInsulationSerieType::Pipe}) {
            std::vector<Insulation> series;
            methods.ReadInsulationSeries(place.Path(), discipline, type, series);
            for (const auto& serie : series)
                list.push_back(ToJson(serie, kInsulation));
        }
    }
    return list;
}

Json ReadSizing(Workplace& place) {
    auto& methods = Methods(place);
    Json list = Json::array();
    for (const auto type : {tolm::TolmSizingMethodType::Duct, tolm::TolmSizingMethodType::Pipe}) {
        std::vector<Sizing> read;
        methods.ReadSizingMethods(place.Path(), type, read);
        for (const auto& method : read)
            list.push_back(ToJson(method, kSizing));
    }
    return list;
}

Json ReadBalancing(Workplace& place) {
    Json list = Json::array();
    for (const auto& method : ReadBalancingMethods(place.Path()))
        list.push_back(ToJson(method, kBalancing));
    return list;
}

template <class Method, const auto& Fields, bool (tolm::TolmBaseDesignData::*Add)(const Method&)>
void WriteMethods(Workplace& place, const Json& records) {
    std::vector<Method> list(records.size());
    for (std::size_t i = 0; i < list.size(); ++i)
        FromJson(records[i], list[i], Fields);
    auto& methods = Methods(place);
    for (const Method& method : list) {
        const bool stored = (methods.*Add)(method);
        place.FailUnlessStored(stored);
    }
}

template <class Method, bool (tolm::TolmBaseDesignData::*Delete)(const std::vector<Method>&)>
void RemoveMethod(Workplace& place, const Json& record) {
    Method method;
    method.SetId(TextAt(record, "id"));
    const bool deleted = (Methods(place).*Delete)({method});
    place.FailUnlessStored(deleted);
}

std::vector<Product> StoredProducts(const Workplace& place) {
    std::vector<Product> products;
    if (!tolm::TolmComponentSqlUtil::ReadCombinedProductList(place.Settings().combinedProductFile, L"", products))
        throw Failure("the combined products could not be read");
    return products;
}

bool IsStored(const std::vector<Product>& stored, const Product& product) {
    return std::find(stored.begin(), stored.end(), product) != stored.end();
}

Json ReadProducts(Workplace& place) {
    const auto products = StoredProducts(place);
    Json list = Json::array();
    for (const auto& product : products)
        list.push_back(ToJson(product, kProduct));
    return list;
}

void WriteProducts(Workplace& place, const Json& records) {
    std::map<std::wstring, std::vector<Product>> byCategory;
    for (const auto& record : records) {
        Product product;
        FromJson(record, product, kProduct);
        if (product.Id.empty() || product.categoryCode.empty())
            throw Failure("a combined product has an \"id\" and a \"category\"");
        byCategory[product.categoryCode].push_back(std::move(product));
    }
    for (const auto& [category, products] : byCategory) {
        const bool taken = place.Dataset().AddCombinedComponents(category, products);
        const auto stored = StoredProducts(place);
        for (const auto& product : products)
            if (!IsStored(stored, product))
                throw Failure("the products were not stored here");
        FailUnlessTaken(place, taken);
    }
    place.FailOnFaults("the products were not stored");
}

void RemoveProduct(Workplace& place, const Json& record) {
    const std::wstring category = TextAt(record, "category");
    const bool taken = place.Dataset().RemoveCombinedComponents(category, category, {TextAt(record, "id")});
    FailUnlessTaken(place, taken);
    place.FailOnFaults("the product was not deleted");
}

// --- new records
// ------------------------------------------------------------------------------------------------------

Json MakeTemplate() {
    return ToJson(*tolm::ITolmDataSetFactory::Get()->CreateCircuitTemplate(), kTemplate);
}

template <class Method, const auto& Fields> Json MakeMethod() {
    return ToJson(Method(), Fields);
}

Json MakeProduct() {
    Product product;
    product.Id = vorn::GuidUtils::ToString(vorn::GuidUtils::Generate(), false, false);
    return ToJson(product, kProduct);
}

template <class Record> std::vector<std::string> Taken(JsonFields<Record> fields) {
    std::vector<std::string> keys;
    for (const auto& field : fields)
        if (field.set != nullptr)
            keys.emplace_back(field.key);
    return keys;
}

using Base = tolm::TolmBaseDesignData;

/// A kind of design method; it goes by the first of the columns.
template <class Method, const auto& Fields, bool (Base::*Add)(const Method&),
          bool (Base::*Delete)(const std::vector<Method>&)>
ExchangeKind MethodKind(const char* many, const char* one, const char* words, std::vector<const char*> columns,
                        Json (*read)(Workplace&)) {
    const char* const name = columns.front();
    return {many,
            one,
            words,
            std::move(columns),
            false,
            name,
            read,
            &MakeMethod<Method, Fields>,
            &WriteMethods<Method, Fields, Add>,
            &RemoveMethod<Method, Delete>,
            Taken<Method>(Fields)};
}

} // namespace

const std::vector<ExchangeKind>& ExchangeKinds() {
    static const std::vector<ExchangeKind> kinds{
        {"templates",
         "template",
         "circuit templates",
         {"systemTypeName", "wireType", "wireSpec", "conduitType", "conduitDN", "layingMode", "id"},
         true,
         nullptr,
         &ReadTemplates,
         &MakeTemplate,
         &WriteTemplates,
         &RemoveTemplate,
         Taken<Template>(kTemplate)},
        MethodKind<Insulation, kInsulation, &Base::AddInsulationSerie, &Base::DeleteInsulationSeries>(
            "insulations", "insulation", "insulation series", {"description", "code", "discipline", "type", "id"},
            &ReadInsulation),
        MethodKind<Sizing, kSizing, &Base::AddSizingMethod, &Base::DeleteSizingMethods>(
            "sizings", "sizing", "sizing methods", {"description", "code", "type", "id"}, &ReadSizing),
        MethodKind<Balancing, kBalancing, &Base::AddBalancingMethod, &Base::DeleteBalancingMethods>(
            "balancings", "balancing", "balancing methods", {"name", "description", "discipline", "id"},
            &ReadBalancing),
        {"products",
         "product",
         "combined products",
         {"name", "category", "spacing", "id"},
         true,
         "name",
         &ReadProducts,
         &MakeProduct,
         &WriteProducts,
         &RemoveProduct,
         Taken<Product>(kProduct)},
        {"components",
         "component",
         "components",
         {"name", "category", "componentType", "version", "id"},
         false,
         nullptr,
         &ReadComponents,
         nullptr,
         nullptr,
         nullptr,
         {}},
    };
    return kinds;
}

const ExchangeKind* FindExchangeKind(const std::string& word) {
    for (const auto& kind : ExchangeKinds())
        if (word == kind.many || word == kind.one)
            return &kind;
    return nullptr;
}

const Json& FindRecord(const ExchangeKind& kind, const Json& records, const std::string& idOrName) {
    const Json* found = nullptr;
    for (const auto& record : records) {
        if (record.at("id") == idOrName)
            return record;
        if (record.at(kind.columns.front()) != idOrName)
            continue;
        if (found != nullptr)
            throw Failure("more than one " + std::string(kind.one) + " goes by " + idOrName + ": give the id");
        found = &record;
    }
    if (found == nullptr)
        throw Failure("there is no " + std::string(kind.one) + " " + idOrName);
    return *found;
}

void OpenSession(Workplace& place, const ExchangeKind& kind) {
    if (!kind.isShared)
        return;
    const auto& profile = place.Settings();
    if (profile.server.empty() && profile.project.empty())
        tolm::CollaborationProjectSettingForPS::Open({});
    else
        place.Connect();
}

} // namespace tolmcli
