#include "Tolm/Workplace.h"

#include "Tolm/Errors.h"
#include "Tolm/SignIn.h"

#include "Host/Categories.h"
#include "Host/Definitions.h"
#include "Host/Session.h"
#include "Host/Trust.h"
#include "Qbase/Qbase.h"
#include "Vorn/Files.h"
#include "Vorn/Notification.h"
#include "Vorn/Text.h"

#include <array>
#include <cstdlib>
#include <utility>

namespace tolmcli {

using vorn::StringUtil;

Listener::Listener() {
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler([this](const vorn::DebugWarning& warning) {
        m_faults.push_back(warning.function + ": " + StringUtil::ToString(warning.message));
    });
    vorn::NotificationUtils::SetHandler([this](vorn::NotificationTypes, const std::wstring& text, const auto&) {
        m_messages.push_back(StringUtil::ToString(text));
    });
}

Listener::~Listener() {
    vorn::DebugMessageMgr::GetDebugMessageMgr()->SetHandler({});
    vorn::NotificationUtils::SetHandler({});
}

std::vector<std::string> Listener::TakeFaults() {
    return std::exchange(m_faults, {});
}

std::vector<std::string> Listener::TakeMessages() {
    return std::exchange(m_messages, {});
}

Workplace::Workplace(const std::wstring& datasetPath) : m_path(datasetPath) {
    CheckDatasetPath(datasetPath);
    m_profile = Profile::Load(datasetPath);
    if (!vorn::FileInfo(datasetPath).Exists())
        throw Failure("there is no dataset " + StringUtil::ToString(datasetPath));
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(datasetPath);
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(m_profile.componentFile));
    m_dataset = tolm::ITolmDataSetFactory::Get()->CreateDataset(datasetPath, m_profile.componentFile,
                                                                m_profile.combinedProductFile, m_profile.binaryFolder);
    if (m_dataset == nullptr)
        throw Failure("the dataset object could not be made");
}

Workplace::~Workplace() {
    tolm::CollaborationProjectSettingForPS::Close();
    tolm::TolmUserSessionUtils::SetUser(L"", L"");
    tolm::TolmTrustSettings::SetCertificateAuthorityFile(L"");
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils({});
}

void Workplace::Connect() {
    if (m_profile.server.empty() || m_profile.project.empty() || m_profile.user.empty())
        throw Failure("the dataset has no service to work with: give --server, --project and --user to 'tolm new'",
                      Misused);
    if (const char* const authorities = std::getenv("TOLM_CA_FILE"))
        tolm::TolmTrustSettings::SetCertificateAuthorityFile(StringUtil::ToWString(authorities));
    tolm::TolmUserSessionUtils::SetUser(m_profile.user, SignIn(m_profile.server, m_profile.user));
    tolm::CollaborationProjectSettingForPS::Open({.httpServer = m_profile.server,
                                                  .workingProjectId = m_profile.project,
                                                  .workingDatasetId = m_profile.workUnit});
}

void Workplace::FailOnFaults(const std::string& what) {
    std::string text = what;
    const auto faults = m_listener.TakeFaults();
    for (const auto& fault : faults)
        text += "\n  " + fault;
    if (!faults.empty())
        throw Failure(text);
}

void Workplace::FailUnlessChangeable(const std::string& what) const {
    CQbase store;
    if (!store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, m_path, false) || !store.lockForUpdate())
        throw Failure(what + " (error " + std::to_string(store.getLastError()) + ")");
}

void Workplace::FailUnlessStored(bool asWanted) {
    FailOnFaults("the change was not stored");
    if (!asWanted)
        throw Failure("the change was not stored: the dataset could not be opened for writing");
}

std::wstring StatusPath(const std::wstring& datasetPath) {
    const auto point = datasetPath.rfind(L'.');
    return datasetPath.substr(0, point) + L"_Status" + datasetPath.substr(point);
}

namespace {

// Attributes of a status record, as Docs/store-format.md gives them.
constexpr short kName = 1601;
constexpr short kMEPType = 1104;
constexpr short kStatus = 1109;
constexpr short kDisciplineId = 1181;

struct TrackedClass {
    const char* code;
    const wchar_t* word;
};

constexpr std::array kTrackedClasses{
    TrackedClass{"MTS", L"material"}, TrackedClass{"PSI", L"size table"},  TrackedClass{"SMS", L"series"},
    TrackedClass{"MSG", L"group"},    TrackedClass{"SYS", L"system type"},
};

const wchar_t* ChangeWord(short status) {
    constexpr std::array kWords{L"created", L"edited", L"removed"};
    return status >= 1 && status <= 3 ? kWords[static_cast<std::size_t>(status - 1)] : L"?";
}

void OpenForReading(CQbase& store, const std::wstring& path) {
    if (!store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, false) || !store.lockForRead())
        throw Failure("cannot open " + StringUtil::ToString(path) + " (error " + std::to_string(store.getLastError()) +
                      ")");
}

std::wstring NameOf(CQbase& data, const char* classCode, const wchar_t* id) {
    CWsz name;
    if (data.fetchEqualRec(classCode, id))
        data.getWsz(kName, name, 1);
    return name.str();
}

NotedChange ReadChange(CQbase& status, CQbase& data, const TrackedClass& tracked) {
    CWsz id;
    status.getObjId(id);
    short change = 0;
    short type = 0;
    short discipline = 0;
    status.getShort(kStatus, change);
    status.getShort(kMEPType, type);
    status.getShort(kDisciplineId, discipline);
    return {tracked.word,       id.str(),    NameOf(data, tracked.code, id), KindWord(type, discipline),
            ChangeWord(change), tracked.code};
}

} // namespace

std::vector<NotedChange> ReadNotedChanges(const std::wstring& datasetPath) {
    std::vector<NotedChange> changes;
    const std::wstring statusPath = StatusPath(datasetPath);
    if (vorn::FileInfo(statusPath).Size() == 0)
        return changes;
    CQbase status;
    CQbase data;
    OpenForReading(data, datasetPath);
    OpenForReading(status, statusPath);
    for (const TrackedClass& tracked : kTrackedClasses) {
        for (bool found = status.fetchFirstMember(tracked.code); found; found = status.fetchNextMember())
            changes.push_back(ReadChange(status, data, tracked));
    }
    return changes;
}

} // namespace tolmcli
