// Works on a dataset file that other processes work on too, and tells line by line what it does:
//   tolm-dataset-process work|settle DATASET ADDRESS TOKEN WORKER FIRST COUNT SEED
// A worker makes, edits and deletes materials of its own ("w2-17": the 17th of worker 2) and synchronises. The worker
// "outside" makes and deletes nothing and edits anybody's. FIRST is the number of its next material and edit. After
// COUNT steps it ends; with COUNT 0 it works until it is killed. Moments are microseconds of the steady clock.
//   put ID MARK VERSION | del ID MARK VERSION    before an edit, with the version that the file says
//   ok MILLISECONDS MOMENT | no ...              after it
//   send MOMENT VERSION | merge MOMENT VERSION   before an upload, alone or behind a merge, with the cloud's version as
//                                                compared
//   sync RESULT 0|1 0|1 VERSION MILLISECONDS     what the comparison said, whether "send" or "merge" stands before it,
//                                                whether the step was done, and the version of the cloud that it came
//                                                to
//   warn TEXT

#include "Host/Definitions.h"
#include "Host/Session.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Qbase/Qbase.h"
#include "StoreSupport/Records.h"
#include "TolmDataSet/TolmDataSet.h"
#include "Vorn/DebugMessage.h"
#include "Vorn/Notification.h"
#include "Vorn/Progress.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <random>
#include <string>

namespace {

using tolm::CompareVersionResult;
using tolmtest::MaterialPtr;
using vorn::StringUtil;
using Clock = std::chrono::steady_clock;

constexpr int kLockTimeout = 1500;
constexpr int kMostRounds = 200;

class NoProgress final : public vorn::IProgressReporter {
public:
    void ReportProgress(double) override {}
};

class Worker {
public:
    Worker(const std::wstring& path, const std::string& name, long first, std::uint64_t seed)
        : m_path(path), m_name(name), m_next(first), m_engine(seed), m_syncShare(seed % 3 == 0 ? 20 : 85),
          m_dataset(tolm::ITolmDataSetFactory::Get()->CreateDataset(path, path + L".components", path + L".combined",
                                                                    path + L".files")) {}

    void Work(int count) {
        for (int i = 0; count == 0 || i < count; ++i)
            Step();
    }

    bool Settle() {
        for (int round = 0; round < kMostRounds; ++round) {
            if (Sync() == CompareVersionResult::Same)
                return true;
        }
        return false;
    }

private:
    bool IsOutside() const { return m_name == "outside"; }
    std::uint64_t Below(std::uint64_t bound) { return m_engine() % bound; }

    void Step() {
        if (Below(100) < m_syncShare)
            return void(Sync());
        const auto chance = Below(100);
        if (chance < 40 && !IsOutside())
            Put(L"w" + StringUtil::ToWString(m_name) + L"-" + std::to_wstring(m_next));
        else
            EditAnother(chance > 90 && !IsOutside());
    }

    /// Of its own, or anybody's.
    void EditAnother(bool deletes) {
        std::vector<MaterialPtr> list;
        tolm::MepQbaseUtil::GetInstance()->ReadMaterialList(m_path, Definition(), tolmtest::Type::Pipe,
                                                            tolmtest::Discipline::Plumbing, list);
        const std::wstring mine = L"w" + (IsOutside() ? L"" : StringUtil::ToWString(m_name) + L"-");
        std::erase_if(list, [&](const auto& each) { return !each->GetId().starts_with(mine); });
        if (list.empty())
            return;
        const auto& chosen = list[Below(list.size())];
        if (deletes)
            Delete(*chosen);
        else
            Put(chosen->GetId());
    }

    void Put(const std::wstring& id) {
        const auto mark = Announce("put", id);
        auto material = tolmtest::Material(id, id.c_str());
        material->SetCreateTime(mark);
        Tell([&] { return tolm::MepQbaseUtil::GetInstance()->WriteMaterial(m_path, Definition(), material.get()); });
    }

    void Delete(const tolm::IProjectSettingMaterial& material) {
        Announce("del", material.GetId());
        Tell([&] { return tolm::MepQbaseUtil::GetInstance()->DeleteMaterialList(m_path, Definition(), {&material}); });
    }

    long Announce(const char* what, const std::wstring& id) {
        bool changed = false;
        const int version = tolm::MepQbaseUtil::GetInstance()->GetLocalVersion(m_path, Definition(), changed);
        const long mark = m_next++;
        std::cout << what << ' ' << StringUtil::ToString(id) << ' ' << mark << ' ' << version << std::endl;
        return mark;
    }

    template <class Edit> void Tell(Edit edit) {
        const auto start = Clock::now();
        const bool done = edit();
        std::cout << (done ? "ok " : "no ") << Since(start) << ' ' << Moment() << std::endl;
    }

    static long Since(Clock::time_point start) {
        return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
    }
    static long long Moment() {
        return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch()).count();
    }

    CompareVersionResult Sync() {
        const auto start = Clock::now();
        std::wstring project;
        std::wstring timePoint;
        int cloud = 0;
        int local = 0;
        const auto result = m_dataset->CompareCloudVersion(project, cloud, local, timePoint);
        const bool sends = result == CompareVersionResult::LocalChanges || result == CompareVersionResult::BothChanged;
        const bool done = StepTowards(result, project, cloud, local);
        std::cout << "sync " << static_cast<int>(result) << ' ' << sends << ' ' << done << ' ' << cloud << ' '
                  << Since(start) << std::endl;
        return result;
    }

    bool StepTowards(CompareVersionResult result, const std::wstring& project, int& cloud, int local) {
        NoProgress progress;
        switch (result) {
        case CompareVersionResult::CloudAhead:
            return m_dataset->SyncDataFromCloud(false, nullptr, nullptr);
        case CompareVersionResult::LocalChanges:
            std::cout << "send " << Moment() << ' ' << cloud << std::endl;
            return Send(project, cloud);
        case CompareVersionResult::BothChanged:
            std::cout << "merge " << Moment() << ' ' << cloud << std::endl;
            return m_dataset->MergeDataAndSendModifiedData(project, &progress, cloud, local);
        default:
            return result == CompareVersionResult::Same;
        }
    }

    /// Where nothing was left to send another process has sent it, and others may have followed: only what was sent
    /// here is stamped, and only over the version that was compared.
    bool Send(const std::wstring& project, int& cloud) {
        auto& store = *tolm::MepQbaseUtil::GetInstance();
        if (store.SendModifiedDataToCloud(m_path, Definition(), m_path + L".components") != tolm::UploadOutcome::Sent)
            return false;
        const int before = cloud;
        cloud = m_dataset->GetCloudVersion(project);
        int version = cloud;
        return version >= 1 && store.ReplaceLocalVersion(m_path, Definition(), before, version);
    }

    static std::wstring Definition() { return tolm::DataSetFilePath::TOLMDDQFilePath; }

    std::wstring m_path;
    std::string m_name;
    long m_next;
    std::mt19937_64 m_engine;
    std::uint64_t m_syncShare; ///< percentage of the steps: some mostly edit, others mostly synchronise
    vorn::OwnerPtr<tolm::ITolmDataset> m_dataset;
};

void ListenToWarnings() {
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler([](const vorn::DebugWarning& warning) {
        std::cout << "warn " << warning.function << ": " << StringUtil::ToString(warning.message) << std::endl;
    });
    vorn::NotificationUtils::SetHandler([](auto, const auto&, const auto&) {});
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 9)
        return 2;
    const std::wstring path = StringUtil::ToWString(argv[2]);
    ListenToWarnings();
    CQbase::setLockTimeout(kLockTimeout);
    tolm::CollaborationProjectSettingForPS::Open({StringUtil::ToWString(argv[3]), L"P", L"W", 30'000'000});
    tolm::TolmUserSessionUtils::SetUser(L"anna", StringUtil::ToWString(argv[4]));
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(path);
    Worker worker(path, argv[5], std::stol(argv[6]), std::stoull(argv[8]));
    if (std::string(argv[1]) == "settle")
        return worker.Settle() ? 0 : 1;
    worker.Work(std::stoi(argv[7]));
    return 0;
}
