// Reads all series of one kind as whole trees (20 fittings, group, size table with material) against 5,000 components,
// and, for the floor, the same records with one query each. Both grow with the number of series and nothing else.

#include "Host/Components.h"
#include "Host/Definitions.h"
#include "MepDatabase/PackedLists.h"
#include "MepDatabase/StoreSchema.h"
#include "Qbase/Qbase.h"
#include "TolmDataSet/TolmDataSet.h"
#include "Vorn/Files.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>

namespace {

using std::wstring;
namespace schema = tolm::schema;

constexpr int kComponents = 5000;
constexpr int kFittings = 20;
constexpr int kSizeTables = 50;

void Require(bool done, const char* what) {
    if (!done)
        throw std::runtime_error(what);
}

/// A folder with a component database and one store for each number of series asked for.
class Files {
public:
    Files() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tolm-bench-XXXXXX").string();
        Require(mkdtemp(pattern.data()) != nullptr, "no temporary folder");
        m_folder = pattern;
        MakeComponents();
        tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(Components()));
    }
    ~Files() {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    wstring Components() const { return (m_folder / "components.db").wstring(); }

    const wstring& Store(int series) {
        auto& path = m_stores[series];
        if (path.empty()) {
            path = (m_folder / ("series" + std::to_string(series) + ".db")).wstring();
            MakeStore(path, series);
        }
        return path;
    }

private:
    void MakeComponents() {
        std::vector<tolm::TolmComponentData> components;
        for (int i = 0; i < kComponents; ++i) {
            tolm::TolmComponentData component;
            component.id = L"c" + std::to_wstring(i);
            component.categoryCode = L"threaded";
            component.name = L"Fitting " + std::to_wstring(i);
            components.push_back(component);
        }
        Require(tolm::TolmComponentSqlUtil::Import(Components(), {{L"2", L"给排水", L"Plumbing"}},
                                                   {{L"threaded", L"", L"2", L"丝接", L"Threaded"}}, components),
                "components");
    }

    static void Begin(CQbase& qb, const char* classCode, const wstring& id) {
        Require(qb.createRec(classCode, id), "createRec");
        qb.setWsz(schema::kName, (L"Record " + id).c_str(), -1);
        qb.setShort(schema::kMEPType, 1);
        qb.setShort(schema::kDisciplineId, 2);
    }

    static void MakeShared(CQbase& qb) {
        const std::vector<tolm::ProjectSettingPipeSize> sizes(15, {16.1F, 21.3F, 15.0F, 2.6F});
        const auto bytes = tolm::Pack(tolm::kPipeSizeLayout, sizes);
        for (int i = 0; i < kSizeTables; ++i) {
            const wstring number = std::to_wstring(i);
            Begin(qb, schema::kMaterial, L"m" + number);
            Require(qb.saveRec(), "saveRec");
            Begin(qb, schema::kMaterialSerieGroup, L"g" + number);
            Require(qb.saveRec(), "saveRec");
            Begin(qb, schema::kSizeModule, L"s" + number);
            qb.setWsz(schema::kMaterialId, (L"m" + number).c_str(), -1);
            qb.setBinaryArray(schema::kPipeSizeList, bytes.data(), static_cast<int>(sizes.size()), 0);
            Require(qb.saveRec(), "saveRec");
        }
    }

    static void MakeConnection(CQbase& qb, int number) {
        std::vector<tolm::PackedFitting> fittings;
        for (int i = 0; i < kFittings; ++i) {
            const int component = (number * kFittings + i) % kComponents;
            fittings.push_back({L"threaded", tolm::FittingPartType::Elbow, tolm::RoutingPreferenceRuleGroupType::Elbows,
                                L"c" + std::to_wstring(component), 15.0F, 80.0F});
        }
        const auto bytes = tolm::Pack(tolm::kFittingLayout, fittings);
        Require(qb.createRec(schema::kConnectionSerie, L"k" + std::to_wstring(number)), "createRec");
        qb.setShort(schema::kConnectionType, 1);
        qb.setBinaryArray(schema::kFittingList, bytes.data(), kFittings, 0);
        Require(qb.saveRec(), "saveRec");
    }

    static void MakeStore(const wstring& path, int series) {
        CQbase qb;
        Require(qb.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, true) && qb.lockForUpdate(), "store");
        MakeShared(qb);
        for (int i = 0; i < series; ++i) {
            const wstring shared = std::to_wstring(i % kSizeTables);
            MakeConnection(qb, i);
            Begin(qb, schema::kMaterialSerie, L"p" + std::to_wstring(i));
            qb.setWsz(schema::kSizeModuleId, (L"s" + shared).c_str(), -1);
            qb.setWsz(schema::kSerieGroupId, (L"g" + shared).c_str(), -1);
            qb.setWsz(schema::kConnectionSerieId, (L"k" + std::to_wstring(i)).c_str(), -1);
            Require(qb.saveRec(), "saveRec");
        }
        Require(qb.closeDatabase(), "closeDatabase");
    }

    std::filesystem::path m_folder;
    std::map<int, wstring> m_stores;
};

Files& Shared() {
    static Files files;
    return files;
}

/// As a host reads them.
void WholeTrees(benchmark::State& state) {
    const int series = static_cast<int>(state.range(0));
    const auto dataset =
        tolm::ITolmDataSetFactory::Get()->CreateDataset(Shared().Store(series), Shared().Components(), L"", L"");
    while (state.KeepRunning()) {
        dataset->CollectData(false, {tolm::TolmProjectSettingTableId::PlumbingPipeSeries});
        if (dataset->GetMEPMaterialSerieData()->GetSerieList().size() != static_cast<std::size_t>(series))
            state.SkipWithError("not all series were read");
    }
    state.SetComplexityN(series);
    state.counters["per series"] =
        benchmark::Counter(series, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(WholeTrees)
    ->Arg(500)
    ->Arg(1000)
    ->Arg(2000)
    ->Arg(5000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

/// The floor: the records that a tree is made of, fetched one by one through the object database, without objects.
void OneQueryPerRecord(benchmark::State& state) {
    const int series = static_cast<int>(state.range(0));
    while (state.KeepRunning()) {
        CQbase qb;
        Require(qb.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, Shared().Store(series), false) &&
                    qb.lockForRead(),
                "store");
        for (int i = 0; i < series; ++i) {
            const wstring shared = std::to_wstring(i % kSizeTables);
            bool found = qb.fetchEqualRec(schema::kMaterialSerie, L"p" + std::to_wstring(i));
            found = qb.fetchEqualRec(schema::kSizeModule, L"s" + shared) && found;
            found = qb.fetchEqualRec(schema::kMaterial, L"m" + shared) && found;
            found = qb.fetchEqualRec(schema::kMaterialSerieGroup, L"g" + shared) && found;
            found = qb.fetchEqualRec(schema::kConnectionSerie, L"k" + std::to_wstring(i)) && found;
            Require(found, "record");
        }
    }
    state.SetComplexityN(series);
}
BENCHMARK(OneQueryPerRecord)
    ->Arg(500)
    ->Arg(1000)
    ->Arg(2000)
    ->Arg(5000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

} // namespace

BENCHMARK_MAIN();
