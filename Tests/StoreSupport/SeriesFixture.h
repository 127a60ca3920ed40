#pragma once

#include "Host/Components.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tolmtest {

using ConnectionPtr = vorn::OwnerPtr<tolm::IProjectSettingConnectionSerie>;
using GroupPtr = vorn::OwnerPtr<tolm::IProjectSettingMEPMaterialSerieGroup>;
using SeriePtr = vorn::OwnerPtr<tolm::IProjectSettingMEPMaterialSerie>;
using SystemTypePtr = vorn::OwnerPtr<tolm::IProjectSettingSystemType>;
using ComponentPtr = vorn::OwnerPtr<tolm::ITolmProjectSettingComponent>;
using Connector = tolm::MEPConnectorType;
using Part = tolm::FittingPartType;
using Rule = tolm::RoutingPreferenceRuleGroupType;

/// A component of nothing but its id and category; one that cannot be cloned yields no copy.
ComponentPtr Component(const wstring& id, const wstring& category = L"elbow", bool canBeCloned = true);

/// A fitting of a series, for comparison.
struct Fitting {
    Part part = Part::Elbow;
    Rule rule = Rule::Elbows;
    wstring component;
    double min = 1.0;
    double max = 1'000'000.0;

    friend bool operator==(const Fitting&, const Fitting&) = default;
};
void PrintTo(const Fitting& fitting, std::ostream* out);
std::vector<Fitting> FittingsOf(const tolm::IProjectSettingConnectionSerie& serie);

/// Records for tests, with these values and defaults for the rest.
ConnectionPtr Connection(wstring id, wstring name = L"", Connector type = Connector::PipeThreaded,
                         Type objectType = Type::Pipe);
void AddFitting(tolm::IProjectSettingConnectionSerie& serie, const Fitting& fitting,
                const wstring& category = L"elbow");
/// A series of `count` fittings.
ConnectionPtr LongConnection(wstring id, int count);
GroupPtr Group(wstring id, wstring name = L"", Type type = Type::Pipe, Discipline discipline = Discipline::Plumbing,
               __int64 createTime = 0);
SeriePtr Serie(wstring id, wstring name = L"", Type type = Type::Pipe, Discipline discipline = Discipline::Plumbing);
SystemTypePtr SystemType(wstring id, wstring name = L"", Type type = Type::Pipe,
                         Discipline discipline = Discipline::Plumbing);

/// One packed fitting, byte by byte.
std::string PackedFittingBytes(const std::string& category, int part, int rule, const std::string& product, float min,
                               float max);
std::string Hex(const std::string& bytes);

/// While it lives, the components of a category are those of `reader`, and the reads are counted.
class ComponentReads {
public:
    using Make = std::vector<ComponentPtr> (*)(const wstring& category);
    explicit ComponentReads(Make make);
    ~ComponentReads();
    ComponentReads(const ComponentReads&) = delete;
    ComponentReads& operator=(const ComponentReads&) = delete;

    /// The categories that were read, and the paths, in order.
    const std::vector<wstring>& Categories() const;
    const std::vector<wstring>& Paths() const;
};

/// A fresh dataset path and a component database with the categories "elbow" and "tee": "e1", "e2", "t1", "t2".
class SeriesFixture : public StoreFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    bool Write(const SeriePtr& serie) { return util.WriteMEPMaterialSerie(path, ddq, serie.get()); }
    bool Write(const SizeModulePtr& module) { return util.WriteSizeModule(path, ddq, module.get()); }
    bool Write(const SystemTypePtr& systemType) { return util.WriteSystemType(path, ddq, systemType.get()); }
    bool Write(const GroupPtr& group) { return util.WriteMEPMaterialSerieGroup(path, ddq, group.get()); }
    /// Stores a connection series, by way of a material series with the id "of " + its own.
    bool Write(ConnectionPtr connection);

    std::vector<SeriePtr> Series(Type type = Type::Pipe, Discipline discipline = Discipline::Plumbing);
    /// The series of this id; a new one where the store has none.
    SeriePtr Read(const wstring& id);
    std::vector<ConnectionPtr> Connections(Connector type = Connector::PipeThreaded);
    /// Puts these bytes in place of a connection series' fittings.
    void SetFittingList(const wstring& id, const std::string& bytes);
    /// The bytes of a connection series' fittings; none when the attribute is missing.
    std::optional<std::string> FittingList(const wstring& id);

    const wstring components = folder.File(L"components.db");
};

} // namespace tolmtest
