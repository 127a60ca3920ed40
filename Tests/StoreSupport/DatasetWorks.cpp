#include "StoreSupport/DatasetWorks.h"

#include "Host/Categories.h"
#include "Host/Definitions.h"
#include "MepDatabase/DatasetPaths.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/StoreSchema.h"
#include "Qbase/Qbase.h"
#include "StoreSupport/Records.h"
#include "TolmDataSet/ITolmDataset.h"
#include "Vorn/Clock.h"
#include "Vorn/Files.h"

#include <algorithm>
#include <stdexcept>

namespace tolmtest {
namespace {

tolm::MepQbaseUtil& Util() {
    return *tolm::MepQbaseUtil::GetInstance();
}
std::wstring Definition() {
    return tolm::DataSetFilePath::TOLMDDQFilePath;
}

bool Write(const WorkPlace& place, const wchar_t* id) {
    return Util().WriteMaterial(place.path, Definition(), Material(id, L"brass").get());
}

bool Delete(const WorkPlace& place) {
    const auto material = Material(L"m1", L"");
    return Util().DeleteMaterialList(place.path, Definition(), {material.get()});
}

bool Pull(const WorkPlace& place) {
    return Util().SyncDataFromCloud(false, nullptr, place.path, Definition(), place.combinedPath, place.binaryFolder,
                                    nullptr);
}

/// Takes back in what the cloud removed and a work unit needs.
bool PullAndRecover(const WorkPlace& place) {
    tolm::RecoverDataInfo info;
    info.idMap[L"y1"] = L"";
    return Util().SyncDataFromCloud(false, nullptr, place.path, Definition(), place.combinedPath, place.binaryFolder,
                                    &info) &&
           info.recovered;
}

bool ReadData(const WorkPlace& place) {
    std::vector<MaterialPtr> list;
    return Util().ReadMaterialList(place.path, Definition(), Type::Pipe, Discipline::Plumbing, list);
}

/// Unlike a reader who takes a status store that does not open for none, it says so. One that is empty is none.
bool ReadStatus(const WorkPlace& place) {
    const std::wstring status = tolm::DatasetPaths::Of(place.path).status;
    CQbase qb;
    long count = 0;
    if (!vorn::FileInfo(status).Exists())
        return true;
    return qb.openDatabase(Definition(), status, false) ? qb.lockForRead() && qb.getNmbOfRecs(count)
                                                        : vorn::FileInfo(status).Size() == 0;
}

/// The local m2 gives way to the cloud's m1.
bool Repair(const WorkPlace& place) {
    CQbase qb;
    if (!qb.openDatabase(Definition(), place.path, false) || !qb.lockForUpdate())
        return false;
    const bool renamed =
        Util().FindAndRenameDuplicatedItems({L"m1"}, {}, {L"m2"}, {}, &qb, tolm::schema::kMaterial, 1, 2, true);
    return qb.closeDatabase() && renamed;
}

class NoProgress : public vorn::IProgressReporter {
public:
    void ReportProgress(double) override {}
};

bool Merge(const WorkPlace& place) {
    NoProgress progress;
    bool pending = true;
    return Util().MergeCloudAndLocalDataset(L"P1", &progress, 3, 2, place.path, Definition(), place.combinedPath,
                                            place.binaryFolder, &pending);
}

bool Upload(const WorkPlace& place) {
    return Util().SendModifiedDataToCloud(false, nullptr, place.path, Definition(), place.combinedPath, false);
}

bool UploadTableByTable(const WorkPlace& place) {
    return Util().SendModifiedDataToCloud(false, nullptr, place.path, Definition(), place.combinedPath, true);
}

/// At a time that stands still, so that what comes out is always the same.
bool UploadAndNoteTime(const WorkPlace& place) {
    vorn::Clock::SetSource([] { return std::chrono::system_clock::from_time_t(1'718'105'045); });
    const bool sent =
        Util().SendModifiedDataToCloud(true, nullptr, place.path, Definition(), place.combinedPath, false);
    vorn::Clock::SetSource(nullptr);
    return sent;
}

/// The comparison takes a file that it cannot read for one that is empty, and changes that it cannot read for none. A
/// status store without records is as good as none.
bool MayHaveChanges(const WorkPlace& place) {
    const std::wstring status = tolm::DatasetPaths::Of(place.path).status;
    if (!vorn::FileInfo(status).Exists())
        return false;
    CQbase qb;
    long count = 0;
    return !qb.openDatabase(Definition(), status, false) || !qb.lockForRead() || !qb.getNmbOfRecs(count) || count > 0;
}

/// What a host does: it compares, and does what the comparison asks for.
bool Synchronise(const WorkPlace& place) {
    const auto dataset = tolm::ITolmDataSetFactory::Get()->CreateDataset(place.path, place.combinedPath,
                                                                         place.combinedPath, place.binaryFolder);
    NoProgress progress;
    std::wstring project;
    std::wstring timePoint;
    int cloud = 0;
    int local = 0;
    switch (dataset->CompareCloudVersion(project, cloud, local, timePoint)) {
    case tolm::CompareVersionResult::Same:
        return !MayHaveChanges(place);
    case tolm::CompareVersionResult::CloudAhead:
        return !MayHaveChanges(place) && dataset->SyncDataFromCloud(false, nullptr, nullptr);
    case tolm::CompareVersionResult::BothChanged:
        return dataset->MergeDataAndSendModifiedData(project, &progress, cloud, local);
    default:
        return false;
    }
}

constexpr DatasetWork kWorks[] = {
    {"read", [](const WorkPlace& place) { return ReadData(place) && ReadStatus(place); }},
    {"read status first", [](const WorkPlace& place) { return ReadStatus(place) && ReadData(place); }},
    {"edit", [](const WorkPlace& place) { return Write(place, L"m1"); }},
    {"create", [](const WorkPlace& place) { return Write(place, L"m9"); }},
    {"delete", Delete},
    {"stamp", [](const WorkPlace& place) { return Util().SetLocalVersion(place.path, Definition(), 7); }},
    {"pull", Pull},
    {"pull and recover", PullAndRecover},
    {"repair", Repair},
    {"merge", Merge},
    {"upload", Upload},
    {"upload tables", UploadTableByTable},
    {"upload and note time", UploadAndNoteTime},
    {"synchronise", Synchronise},
};

} // namespace

std::span<const DatasetWork> DatasetWorks() {
    return kWorks;
}

void UseUnknowingCategories() {
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(L""));
}

const DatasetWork& FindDatasetWork(const std::string& name) {
    const auto found = std::ranges::find(kWorks, name, &DatasetWork::name);
    if (found == std::end(kWorks))
        throw std::invalid_argument("no operation " + name);
    return *found;
}

} // namespace tolmtest
