#include "Converge/HostHistories.h"

#include <algorithm>
#include <array>

namespace tolmtest {
namespace {

using nlohmann::json;
using Type = tolm::TolmProjectSettingMEPObjectType;

constexpr int kFewestSteps = 14;
constexpr std::uint64_t kFurtherSteps = 22;
constexpr std::array kNames{"A", "B", "C", "甲", "A(1)"};

json Node(const char* id, const char* group, const char* name, json content, const char* parent = "") {
    return {{"ID", id},           {"groupName", group}, {"text", name},
            {"parentID", parent}, {"CreateTime", 1},    {"content", std::move(content)}};
}

json Content(json sizeList) {
    return {{"sizeList", std::move(sizeList)}};
}

json Tray(const char* id, const char* name, int type) {
    auto content = Content({{{"Size", 100.0}}});
    content["type"] = type;
    return Node(id, "cableTray", name, content);
}

json Pipe(const char* id, const char* group, const char* name, const char* material) {
    auto content = Content({{{"DN", 15.0}, {"OD", 21.5}, {"ID", 16.0}, {"Thickness", 2.5}}});
    content["roughness"] = 0.5;
    return Node(id, group, name, content, material);
}

json Serie(const char* id, const char* name) {
    return {{"ID", id},         {"name", name},          {"CreateTime", 1},     {"connective", 1}, {"minSize", 15.0},
            {"maxSize", 100.5}, {"preferredConnect", 0}, {"PipeSegmentId", ""}, {"parentID", ""}};
}

json TraySerie(const char* id, const char* name, int type) {
    return {{"ID", id}, {"name", name}, {"CreateTime", 1}, {"type", type}};
}

json System(const char* id, const char* name, const char* serie) {
    return {{"ID", id},        {"systemType", name},   {"code", "J"}, {"description", ""}, {"systemCategory", 1},
            {"CreateTime", 1}, {"fittingIds", {serie}}};
}

json Wire(const char* id, const char* name) {
    return Node(id, "electricWireType", name,
                {{"series", 0},
                 {"currentUseTemperature", 1},
                 {"sizeList", {{{"area", "2.5"}, {"current", 20}, {"temperature", 1}}}}});
}

json Duct(const char* id, const char* name) {
    return Node(id, "ductSeriesType", name,
                {{"shape", 0}, {"systemPress", 1}, {"series", "plate"}, {"sizeList", {{{"Size", 100.0}}}}});
}

/// Electrical system types are noted under one object type and looked up under another, so that a merge sees no
/// conflict between them: each belongs to the host that made it.
bool IsShared(const Slice& slice) {
    return slice.type != Type::ElectricalSystem;
}

/// A pipe table whose material is gone would go up as a material, so the materials of pipe tables stay; and a refresh
/// keeps a tray table that the cloud removed.
bool MayBeDeleted(const Slice& slice, bool isFirst) {
    if (slice.kind == SettingKind::Material)
        return !isFirst;
    return slice.kind != SettingKind::Sizes || slice.type != Type::CableTray;
}

} // namespace

nlohmann::json FirstTables() {
    json tables;
    tables["ConfigTree"] = {Node("pipe material", "MaterialSeries", "steel", json::object()),
                            Node("hvac material", "HVACMaterialSeries", "copper", json::object()),
                            Tray("tray 0", "trough", 0),
                            Tray("tray 1", "ladder", 1),
                            Tray("tray 2", "mesh", 2),
                            Node("first material", "MaterialSeries", "A", json::object()),
                            Pipe("first pipe", "MaterialSeries", "B", "pipe material"),
                            Pipe("first hvac", "HVACMaterialSeries", "A", "hvac material"),
                            Duct("first duct", "A"),
                            Wire("first wire", "W"),
                            Node("first conduit", "electricLinePipe", "B", Content(json::array())),
                            Node("first group", "pipeFittingGroup", "A", json::object()),
                            Node("first duct group", "ductFittingGroup", "B", json::object())};
    tables["PipeType"] = {Serie("first serie", "C")};
    tables["DuctType"] = {Serie("first duct serie", "A")};
    tables["CableTrayFittingsType"] = {TraySerie("first tray serie", "A", 1)};
    tables["PipeSystemType"] = {System("first system", "A", "first serie")};
    tables["DuctSystemType"] = {System("first duct system", "B", "first duct serie")};
    return tables;
}

bool HasRepairedNames(const Slice& slice) {
    return slice.type != Type::ElectricalSystem && slice.type != Type::Wire;
}

nlohmann::json HostHistoryMaker::History() {
    m_hosts = static_cast<int>(2 + Below(5));
    KnowFirst();
    json steps = json::array();
    for (auto count = kFewestSteps + Below(kFurtherSteps); count > 0; --count) {
        if (Chance(4))
            AddRecovery(steps);
        steps.push_back(Step());
    }
    return {{"hosts", m_hosts}, {"steps", std::move(steps)}};
}

void HostHistoryMaker::KnowFirst() {
    m_known.clear();
    m_deletedSystems.clear();
    const auto know = [&](const char* word, const char* id) { m_known.push_back({&SliceOf(word), id, -1}); };
    know("pipe materials", "pipe material");
    know("pipe materials", "first material");
    know("hvac materials", "hvac material");
    for (const char* tray : {"tray 0", "tray 1", "tray 2"})
        know("tray sizes", tray);
    know("pipe sizes", "first pipe");
    know("hvac sizes", "first hvac");
    know("duct sizes", "first duct");
    know("wire sizes", "first wire");
    know("conduit sizes", "first conduit");
    know("pipe groups", "first group");
    know("duct groups", "first duct group");
    know("pipe series", "first serie");
    know("duct series", "first duct serie");
    know("tray series", "first tray serie");
    know("pipe systems", "first system");
    know("duct systems", "first duct system");
}

nlohmann::json HostHistoryMaker::Step() {
    if (Chance(7))
        return Together();
    const int host = static_cast<int>(Below(m_hosts));
    if (Chance(10))
        return Direct(host);
    return Chance(31) ? Sync(host) : Edit(host);
}

nlohmann::json HostHistoryMaker::Sync(int host) {
    json step{{"host", host}, {"do", "sync"}};
    if (!m_deletedSystems.empty() && Chance(60))
        step["recover"] = WantedBack();
    if (Chance(25)) {
        constexpr std::array kCalls{"/api/UpLoad/", "/api/UpLoad/", "/api/GetVersion/", "/api/DownloadVersion/"};
        step["lose"] = kCalls[Below(kCalls.size())];
        if (Chance(40))
            step["rounds"] = 1;
    }
    return step;
}

/// One host removes a system type, and another one that has nothing to send takes it back.
void HostHistoryMaker::AddRecovery(json& steps) {
    std::vector<const Known*> systems;
    for (const Known& known : m_known) {
        if (known.slice->kind == SettingKind::System && IsShared(*known.slice))
            systems.push_back(&known);
    }
    const Known& system = *systems[Below(systems.size())];
    const int remover = static_cast<int>(Below(m_hosts));
    const int other = (remover + 1) % m_hosts;
    for (const int host : {remover, other})
        steps.push_back({{"host", host}, {"do", "sync"}});
    steps.push_back({{"host", remover}, {"do", "delete"}, {"slice", system.slice->word}, {"id", system.id}});
    m_deleted.emplace_back(remover, system.id);
    m_deletedSystems.push_back(system.id);
    steps.push_back(Sync(remover));
    if (Chance(30))
        steps.push_back(Edit(remover));
    steps.push_back(Sync(other));
    steps.back()["recover"] = {system.id};
}

nlohmann::json HostHistoryMaker::WantedBack() {
    json ids = json::array();
    for (const auto& id : m_deletedSystems) {
        if (Chance(60))
            ids.push_back(id);
    }
    return ids;
}

/// A few templates and products that all hosts write and remove.
nlohmann::json HostHistoryMaker::Direct(int host) {
    constexpr std::array kCategories{"16353515", "16302510"};
    const auto number = Below(4);
    const bool isProduct = Chance(50);
    json step{{"host", host}, {"do", isProduct ? "product" : "template"}};
    step["id"] = (isProduct ? "k" : "t") + std::to_string(number);
    if (isProduct)
        step["category"] = kCategories[number % kCategories.size()];
    if (Chance(30))
        step["remove"] = true;
    else
        step["mark"] = ++m_mark;
    return step;
}

nlohmann::json HostHistoryMaker::Together() {
    json hosts = json::array();
    for (int host = 0; host < m_hosts; ++host) {
        if (Chance(60))
            hosts.push_back(host);
    }
    return {{"do", "together"}, {"hosts", hosts}};
}

const HostHistoryMaker::Known* HostHistoryMaker::Any(int host) {
    const Known& known = m_known[Below(m_known.size())];
    return IsShared(*known.slice) || known.host == host ? &known : nullptr;
}

nlohmann::json HostHistoryMaker::Edit(int host) {
    const Known* known = Chance(60) ? Any(host) : nullptr;
    return known != nullptr ? Change(host, *known) : New(host);
}

nlohmann::json HostHistoryMaker::New(int host) {
    const Slice* slice = &kSlices[Below(kSlices.size())];
    while (slice->kind == SettingKind::Sizes && slice->type == Type::CableTray)
        slice = &kSlices[Below(kSlices.size())];
    const auto id = std::to_string(host) + "-" + std::to_string(++m_counter);
    m_known.push_back({slice, id, host});
    json step = Put(host, *slice, id);
    step["new"] = true;
    return step;
}

/// What this host deleted it may put back, as a person does who thinks again.
nlohmann::json HostHistoryMaker::Change(int host, const Known& known) {
    if (MayBeDeleted(*known.slice, known.host < 0) && Chance(35)) {
        m_deleted.emplace_back(host, known.id);
        if (known.slice->kind == SettingKind::System && IsShared(*known.slice))
            m_deletedSystems.push_back(known.id);
        return {{"host", host}, {"do", "delete"}, {"slice", known.slice->word}, {"id", known.id}};
    }
    json step = Put(host, *known.slice, known.id);
    if (std::ranges::find(m_deleted, std::pair(host, known.id)) != m_deleted.end())
        step["undo"] = true;
    return step;
}

nlohmann::json HostHistoryMaker::Put(int host, const Slice& slice, const std::string& id) {
    return {{"host", host},        {"do", "put"},      {"slice", slice.word}, {"id", id},
            {"name", Name(slice)}, {"mark", ++m_mark}, {"n", Below(1'000)},   {"links", Links(slice)}};
}

std::string HostHistoryMaker::Name(const Slice& slice) {
    if (!HasRepairedNames(slice))
        return "name " + std::to_string(m_mark);
    return kNames[Below(kNames.size())];
}

/// A pipe table cannot be without a material; the last link names one that is always there.
nlohmann::json HostHistoryMaker::Links(const Slice& slice) {
    json links = json::array();
    if (slice.kind == SettingKind::Sizes && slice.type == Type::Pipe) {
        AddLinks(links, SettingKind::Material, slice, 2);
        links.push_back(slice.discipline == tolm::MEPDisciplineId::Plumbing ? "pipe material" : "hvac material");
    }
    if (slice.kind == SettingKind::Serie) {
        AddLinks(links, SettingKind::Sizes, slice, 2);
        AddLinks(links, SettingKind::Group, slice, 2);
    }
    if (slice.kind == SettingKind::System)
        AddLinks(links, slice.type == Type::ElectricalSystem ? SettingKind::Sizes : SettingKind::Serie, slice, 3);
    return links;
}

void HostHistoryMaker::AddLinks(json& links, SettingKind kind, const Slice& of, std::uint64_t most) {
    const auto type = of.type == Type::ElectricalSystem ? Type::Wire : of.type;
    std::vector<std::string> ids;
    for (const Known& known : m_known) {
        if (kind == SettingKind::Material && known.host >= 0)
            continue;
        if (known.slice->kind == kind && known.slice->type == type && known.slice->discipline == of.discipline)
            ids.push_back(known.id);
    }
    std::ranges::shuffle(ids, m_engine);
    const auto count = std::min<std::uint64_t>(Below(most + 1), ids.size());
    for (std::size_t i = 0; i < count; ++i)
        links.push_back(ids[i]);
}

} // namespace tolmtest
