#include "StoreSupport/MergeFixture.h"

#include "Vorn/Text.h"

#include <algorithm>

namespace tolmtest {
namespace {

std::string Quoted(std::string text) {
    std::replace(text.begin(), text.end(), '\'', '"');
    return text;
}

} // namespace

void MergeFixture::Synced(const std::vector<wstring>& ids) {
    LocalHas(7);
    for (const wstring& id : ids)
        Edits(id, id);
    ASSERT_TRUE(CQbase::removeStore(statusPath));
}

void MergeFixture::Edits(const wstring& id, const wstring& name) {
    ASSERT_TRUE(util.WriteMaterial(path, ddq, Material(id, name).get()));
}

void MergeFixture::Removes(const wstring& id) {
    const auto material = Material(id, L"");
    ASSERT_TRUE(util.DeleteMaterialList(path, ddq, {material.get()}));
}

void MergeFixture::CloudSays(const std::string& add, const std::string& del) {
    CloudHas(8, Quoted(add), Quoted(del));
}

void MergeFixture::CloudEdits(const wstring& id, const wstring& name) {
    const std::string row = "{'ID':'" + vorn::StringUtil::ToString(id) + "','groupName':'MaterialSeries','parentID':''";
    CloudSays("{'ConfigTree':[" + row + ",'text':'" + vorn::StringUtil::ToString(name) + "'}]}",
              "{'ConfigTree':[" + row + "}]}");
}

bool MergeFixture::Merge(vorn::IProgressReporter* reporter) {
    return util.MergeCloudAndLocalDataset(L"P1", reporter, 8, 7, path, ddq, combinedPath, binaryFolder, &pending);
}

std::vector<std::string> MergeFixture::MaterialsAt(const wstring& at) const {
    std::vector<std::string> materials;
    for (const SqlRow& row : Sql(at, "SELECT id||' '||Name FROM MTS ORDER BY seq"))
        materials.push_back(row[0]);
    return materials;
}

Warnings MergeFixture::Says(const std::vector<wstring>& messages) {
    Warnings warnings;
    for (const wstring& message : messages)
        warnings.push_back(L"MepQbaseUtil::MergeCloudAndLocalDataset: " + message);
    return warnings;
}

} // namespace tolmtest
