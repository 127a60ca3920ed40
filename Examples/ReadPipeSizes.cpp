// A small host: brings a dataset up to the cloud's version and prints its pipe sizes.
//
//   example-read-pipe-sizes DATASET SERVER PROJECT USER     (the session's token in TOLM_TOKEN)

#include "Host/Session.h"
#include "TolmDataSet/TolmDataSet.h"
#include "Vorn/Notification.h"
#include "Vorn/Text.h"

#include <cstdlib>
#include <iostream>

namespace {

using vorn::StringUtil;

class Progress : public vorn::IProgressReporter {
    void ReportProgress(double percentage) override { std::cerr << percentage << " %\n"; }
};

void OpenSession(char** argv) {
    const char* token = std::getenv("TOLM_TOKEN");
    tolm::TolmUserSessionUtils::SetUser(StringUtil::ToWString(argv[4]), StringUtil::ToWString(token ? token : ""));
    tolm::CollaborationProjectSettingForPS::Open(
        {.httpServer = StringUtil::ToWString(argv[2]), .workingProjectId = StringUtil::ToWString(argv[3])});
}

void Print(const tolm::IProjectSettingSizeModule& module) {
    std::cout << StringUtil::ToString(module.GetName()) << '\n';
    for (const auto& size : module.GetPipeSizeList())
        std::cout << "  DN " << size.nominalDiameter << ": " << size.outerDiameter << " x " << size.thickness
                  << " mm\n";
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "usage: " << argv[0] << " DATASET SERVER PROJECT USER\n";
        return 2;
    }
    vorn::NotificationUtils::SetHandler([](vorn::NotificationTypes, const std::wstring& text, const auto&) {
        std::cerr << StringUtil::ToString(text) << '\n';
    });
    OpenSession(argv);

    const std::wstring path = StringUtil::ToWString(argv[1]);
    const auto dataset = tolm::ITolmDataSetFactory::Get()->CreateDataset(path, path + L".components",
                                                                         path + L".combined", path + L".files");
    Progress progress;
    dataset->SyncDataFromCloud(true, &progress, nullptr);

    dataset->CollectData(
        false, {tolm::TolmProjectSettingTableId::PlumbingPipeSizes, tolm::TolmProjectSettingTableId::HVACPipeSizes});
    for (const auto* module : dataset->GetSizeModuleData()->GetSizeList())
        Print(*module);
    return 0;
}
