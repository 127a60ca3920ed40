// The library's side of the comparison with another store: a host that does what it is told, line by line, and answers
// each line with the seconds it took, by the public headers alone.
//
//   tolm-dataset-side ADDRESS USER COMPONENTS     (the session's token in TOLM_TOKEN)
//
//   pull PROJECT FOLDER         brings the dataset in the folder to the cloud's version
//   edit PROJECT FOLDER ID...   gives each of these records another name; the answer is the time of one
//   sync PROJECT FOLDER         merges with the cloud and sends what was changed here
//   count PROJECT FOLDER        no time, but the number of records that can be edited
#include "Host/Categories.h"
#include "Host/Session.h"
#include "TolmDataSet/TolmDataSet.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Notification.h"
#include "Vorn/Text.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>

namespace {

using tolm::CompareVersionResult;
using Slice = tolm::TolmProjectSettingTableId;
using vorn::StringUtil;

constexpr int kRequestTimeOut = 600'000'000; // microseconds; it is not what is measured
const std::vector<Slice> kMaterials{Slice::PlumbingPipeMaterials, Slice::HVACPipeMaterials};
const std::vector<Slice> kSizes{Slice::PlumbingPipeSizes, Slice::HVACPipeSizes, Slice::DuctSizes,
                                Slice::CableTraySizes,    Slice::ConduitSizes,  Slice::WireSizes};
const std::vector<Slice> kSeries{Slice::PlumbingPipeSeries, Slice::HVACPipeSeries, Slice::DuctSeries,
                                 Slice::CableTraySeries, Slice::ConduitSeries};
const std::vector<Slice> kSystemTypes{Slice::PlumbingPipeSystemTypes, Slice::HVACPipeSystemTypes,
                                      Slice::DuctSystemTypes, Slice::ElectricalSystemTypes};

void Require(bool done, const char* what) {
    if (!done)
        throw std::runtime_error(what);
}

double SecondsOf(const auto& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct SilentProgress : vorn::IProgressReporter {
    void ReportProgress(double) override {}
};

/// A dataset and where it stands against the cloud.
class Dataset {
public:
    Dataset(const std::filesystem::path& folder, const std::wstring& components) {
        std::filesystem::create_directories(folder);
        const std::wstring store = (folder / "set.db").wstring();
        tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(store);
        m_dataset = tolm::ITolmDataSetFactory::Get()->CreateDataset(
            store, components, (folder / "combined.db").wstring(), (folder / "files").wstring());
    }
    tolm::ITolmDataset* operator->() const { return m_dataset.get(); }

    CompareVersionResult Compare() {
        std::wstring ignoredTime;
        return m_dataset->CompareCloudVersion(project, cloudVersion, localVersion, ignoredTime);
    }

    std::wstring project;
    int cloudVersion = 0;
    int localVersion = 0;

private:
    vorn::OwnerPtr<tolm::ITolmDataset> m_dataset;
};

double Pull(Dataset& dataset) {
    SilentProgress progress;
    return SecondsOf([&] {
        Require(dataset.Compare() == CompareVersionResult::CloudAhead, "there is nothing to pull");
        Require(dataset->SyncDataFromCloud(true, &progress, nullptr), "a pull fails");
    });
}

double Synchronise(Dataset& dataset) {
    SilentProgress progress;
    return SecondsOf([&] {
        Require(dataset.Compare() == CompareVersionResult::BothChanged, "not both sides were changed");
        Require(dataset->MergeDataAndSendModifiedData(dataset.project, &progress, dataset.cloudVersion,
                                                      dataset.localVersion),
                "a merge fails");
    });
}

void AppendToName(auto& record) {
    std::wstring name = record.GetName() + L" local";
    record.SetName(name);
}

/// The name of a cable table travels as that of its type.
void AppendToName(tolm::IProjectSettingSizeModule& module) {
    std::wstring name = module.GetName() + L" local";
    module.SetName(name);
    if (module.GetMEPType() == tolm::TolmProjectSettingMEPObjectType::Wire)
        module.SetCableSpecTypeName(name);
}

/// Renames those records of the list that are wanted, and takes them off. The time is that of storing them.
template <class Record>
double Rename(const std::vector<const Record*>& records, std::set<std::wstring>& wanted, const auto& store) {
    double seconds = 0;
    for (const Record* record : records) {
        if (wanted.erase(record->GetId()) == 0)
            continue;
        AppendToName(const_cast<Record&>(*record)); // a table's records are never const objects
        seconds += SecondsOf([&] { store(record); });
    }
    return seconds;
}

/// Each kind is collected when the one before is stored: a record is stored with the parts of its tree.
double Edit(Dataset& dataset, std::set<std::wstring> wanted) {
    auto* materials = EditTable(dataset->GetMaterialData());
    auto* sizes = EditTable(dataset->GetSizeModuleData());
    auto* series = EditTable(dataset->GetMEPMaterialSerieData());
    auto* systemTypes = EditTable(dataset->GetSystemTypeData());
    const auto count = static_cast<double>(wanted.size());
    dataset->CollectData(false, kMaterials);
    double seconds =
        Rename(materials->GetMaterialList(), wanted, [&](auto* record) { materials->AddMaterialToDB(record); });
    dataset->CollectData(false, kSizes);
    seconds += Rename(sizes->GetSizeList(), wanted, [&](auto* record) { sizes->AddSizeModuleToDB(record); });
    dataset->CollectData(false, kSeries);
    seconds += Rename(series->GetSerieList(), wanted, [&](auto* record) { series->AddSerieToDB(record); });
    dataset->CollectData(false, kSystemTypes);
    seconds +=
        Rename(systemTypes->GetSystemTypeList(), wanted, [&](auto* record) { systemTypes->AddSystemTypeToDB(record); });
    Require(wanted.empty(), "a record that is to be edited is not there");
    return seconds / count;
}

double Count(Dataset& dataset) {
    std::vector<Slice> slices;
    for (const auto* kind : {&kMaterials, &kSizes, &kSeries, &kSystemTypes})
        slices.insert(slices.end(), kind->begin(), kind->end());
    dataset->CollectData(false, slices);
    return static_cast<double>(dataset->GetMaterialData()->GetMaterialList().size() +
                               dataset->GetSizeModuleData()->GetSizeList().size() +
                               dataset->GetMEPMaterialSerieData()->GetSerieList().size() +
                               dataset->GetSystemTypeData()->GetSystemTypeList().size());
}

struct Host {
    std::wstring address;
    std::wstring components;
};

double Run(const Host& host, const std::string& line) {
    std::istringstream words(line);
    std::string command;
    std::string project;
    std::string folder;
    words >> command >> project >> folder;
    tolm::CollaborationProjectSettingForPS::Open({.httpServer = host.address,
                                                  .workingProjectId = StringUtil::ToWString(project),
                                                  .workingDatasetId = L"workunit",
                                                  .requestTimeOut = kRequestTimeOut});
    Dataset dataset(folder, host.components);
    if (command == "count")
        return Count(dataset);
    if (command == "edit") {
        std::set<std::wstring> ids;
        for (std::string id; words >> id;)
            ids.insert(StringUtil::ToWString(id));
        return Edit(dataset, ids);
    }
    Require(command == "pull" || command == "sync", "a command is not known");
    const double seconds = command == "pull" ? Pull(dataset) : Synchronise(dataset);
    Require(dataset.Compare() == CompareVersionResult::Same, "dataset and cloud are not the same");
    return seconds;
}

/// What is told to a user goes nowhere; a fault ends the process, since what comes after it would measure nothing.
void Quieten() {
    vorn::NotificationUtils::SetHandler([](auto&&...) {});
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler([](const vorn::DebugWarning& warning) {
        std::cerr << warning.function << ": " << StringUtil::ToString(warning.message) << '\n';
        std::_Exit(1);
    });
}

} // namespace

int main(int argc, char** argv) {
    const char* token = std::getenv("TOLM_TOKEN");
    if (argc != 4 || token == nullptr) {
        std::cerr << "usage: TOLM_TOKEN=... tolm-dataset-side ADDRESS USER COMPONENTS\n";
        return 2;
    }
    try {
        Quieten();
        const Host host{StringUtil::ToWString(argv[1]), StringUtil::ToWString(argv[3])};
        tolm::TolmUserSessionUtils::SetUser(StringUtil::ToWString(argv[2]), StringUtil::ToWString(token));
        tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(host.components));
        for (std::string line; std::getline(std::cin, line);)
            std::cout << Run(host, line) << std::endl;
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "tolm-dataset-side: " << error.what() << '\n';
        return 1;
    }
}
