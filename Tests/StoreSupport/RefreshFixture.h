#pragma once

#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/StoreFixture.h"
#include "Support/ScriptedServer.h"
#include "Support/TestSession.h"
#include "TolmDataSet/SmallRecords.h"
#include "Vorn/Progress.h"

#include <functional>
#include <string>
#include <vector>

namespace tolmtest {

/// Records as lines of text.
using RecordLines = std::vector<std::string>;

/// What a reporter hears; `onReport` may look around meanwhile.
class ProgressNotes : public vorn::IProgressReporter {
public:
    void ReportProgress(double percentage) override {
        percentages.push_back(percentage);
        if (onReport)
            onReport(percentage);
    }
    std::vector<double> percentages;
    std::function<void(double)> onReport;
};

/// A dataset file, a session, and a service that answers what the test wrote down. Work units have no changes unless
/// a test says so.
class RefreshFixture : public StoreFixture {
protected:
    RefreshFixture();
    ~RefreshFixture() override;

    /// The service stands at this version and answers a download with this increment.
    void CloudHas(int version, const std::string& increment);
    void CloudHas(int version, const std::string& add, const std::string& del);
    /// A dataset file with a header of this version.
    void LocalHas(int version);
    /// Puts a record into the dataset file, with a name unless that is empty.
    void Put(const char* classCode, const wstring& id, const wstring& name) const;

    bool Refresh(tolm::RecoverDataInfo* recoverInfo = nullptr) { return RefreshWith(false, &progress, recoverInfo); }
    bool RefreshWith(bool writeTimePoint, vorn::IProgressReporter* reporter, tolm::RecoverDataInfo* recoverInfo);

    int LocalVersion() const;
    /// "id name type discipline" of each record of the class, in order of creation; "-" for what is missing.
    RecordLines Records(const char* classCode) const;
    wstring RecordText(const char* classCode, const wstring& id, short attribute) const;
    /// Path of the last download that was asked for.
    std::string DownloadPath() const;
    std::size_t DownloadCount() const;

    const wstring combinedPath = folder.File(L"combined.db");
    const wstring binaryFolder = folder.Path();
    ScriptedServer server;
    TestSession session{server.Address()};
    ProgressNotes progress;
};

using Notifications = std::vector<Notification>;
inline const Notifications Loaded{{0, L"载入成功！"}};
inline const Notifications UpToDate{{0, L"配置载入成功！"}};
inline const Notifications LoadFailed{{2, L"载入失败了！"}};
inline const Notifications OpenFailed{{2, L"本地配置打开失败！"}};
inline const Notifications DownloadFailed{{2, L"获取数据失败！"}};
inline const Notifications VersionFailed{{2, L"获取云端配置版本失败！"}};
inline const Notifications NotInitialised{{2, L"获取云端配置版本失败,云端配置未做初始化！"}};

} // namespace tolmtest
