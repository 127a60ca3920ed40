#include "StoreSupport/RefreshFixture.h"

#include "Host/Session.h"
#include "Vorn/Text.h"

#include <algorithm>

namespace tolmtest {
namespace {

std::string ShortText(CQbase& qb, short attribute) {
    short value = 0;
    return qb.getShort(attribute, value) ? std::to_string(value) : "-";
}

std::string NameText(CQbase& qb) {
    CWsz name;
    return qb.getWsz(tolm::schema::kName, name, 1) ? vorn::StringUtil::ToString(name.str()) : "-";
}

std::string RecordLine(CQbase& qb) {
    CWsz id;
    qb.getObjId(id);
    return vorn::StringUtil::ToString(id.str()) + " " + NameText(qb) + " " + ShortText(qb, tolm::schema::kMEPType) +
           " " + ShortText(qb, tolm::schema::kDisciplineId);
}

} // namespace

RefreshFixture::RefreshFixture() {
    server.On("/api/workunit/downloadData/", ScriptedAnswer::Data("[]"));
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(path);
}

RefreshFixture::~RefreshFixture() {
    tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(L"");
}

void RefreshFixture::CloudHas(int version, const std::string& increment) {
    server.On("/api/GetVersion/", ScriptedAnswer::Data(std::to_string(version)));
    server.On("/api/DownloadVersion/", ScriptedAnswer::Data(increment));
}

void RefreshFixture::CloudHas(int version, const std::string& add, const std::string& del) {
    CloudHas(version, R"({"add":)" + add + R"(,"del":)" + del + "}");
}

void RefreshFixture::LocalHas(int version) {
    MakeStore();
    ASSERT_TRUE(util.SetLocalVersion(path, ddq, version));
}

void RefreshFixture::Put(const char* classCode, const wstring& id, const wstring& name) const {
    CQbase qb;
    ASSERT_TRUE(qb.openDatabase(ddq, path, true));
    ASSERT_TRUE(qb.createRec(classCode, id));
    if (!name.empty()) {
        ASSERT_TRUE(qb.setWsz(tolm::schema::kName, name.c_str(), -1));
    }
    ASSERT_TRUE(qb.saveRec());
    ASSERT_TRUE(qb.closeDatabase());
}

bool RefreshFixture::RefreshWith(bool writeTimePoint, vorn::IProgressReporter* reporter,
                                 tolm::RecoverDataInfo* recoverInfo) {
    return util.SyncDataFromCloud(writeTimePoint, reporter, path, ddq, combinedPath, binaryFolder, recoverInfo);
}

int RefreshFixture::LocalVersion() const {
    bool changed = false;
    return util.GetLocalVersion(path, ddq, changed);
}

RecordLines RefreshFixture::Records(const char* classCode) const {
    CQbase qb;
    EXPECT_TRUE(qb.openDatabase(ddq, path, false));
    RecordLines records;
    for (bool more = qb.fetchFirstMember(classCode); more; more = qb.fetchNextMember())
        records.push_back(RecordLine(qb));
    return records;
}

wstring RefreshFixture::RecordText(const char* classCode, const wstring& id, short attribute) const {
    CQbase qb;
    CWsz text;
    EXPECT_TRUE(qb.openDatabase(ddq, path, false) && qb.fetchEqualRec(classCode, id));
    return qb.getWsz(attribute, text, 1) ? text.str() : wstring();
}

std::string RefreshFixture::DownloadPath() const {
    const auto paths = server.Paths();
    const auto found = std::find_if(paths.rbegin(), paths.rend(),
                                    [](const auto& asked) { return asked.starts_with("/api/DownloadVersion/"); });
    return found == paths.rend() ? "" : *found;
}

std::size_t RefreshFixture::DownloadCount() const {
    const auto paths = server.Paths();
    return static_cast<std::size_t>(std::count_if(
        paths.begin(), paths.end(), [](const auto& asked) { return asked.starts_with("/api/DownloadVersion/"); }));
}

} // namespace tolmtest
