#pragma once

#include "StoreSupport/Records.h"
#include "StoreSupport/RefreshFixture.h"

#include <string>
#include <vector>

namespace tolmtest {

/// A dataset at version 7 with local changes, a session, and a service whose increment the test writes down.
class MergeFixture : public RefreshFixture {
protected:
    /// A dataset with these materials of plumbing pipes, ids as names, none of which is a local change.
    void Synced(const std::vector<wstring>& ids);
    /// Gives a material a name, as a local change.
    void Edits(const wstring& id, const wstring& name);
    void Removes(const wstring& id);
    /// The service answers the download with this increment; single quotation marks stand for double ones.
    void CloudSays(const std::string& add, const std::string& del);
    /// The cloud gives a material another name.
    void CloudEdits(const wstring& id, const wstring& name);

    bool Merge() { return Merge(&progress); }
    bool Merge(vorn::IProgressReporter* reporter);

    /// "id name" of each material, in order of creation.
    std::vector<std::string> Materials() const { return MaterialsAt(path); }
    std::vector<std::string> MaterialsAt(const wstring& at) const;
    /// What the functions of the merge have to say of a failure, in its name.
    static Warnings Says(const std::vector<wstring>& messages);

    const wstring tempPath = folder.File(L"set_temp.db");
    const wstring tempStatusPath = folder.File(L"set_Status_temp.db");
    bool pending = true;
};

} // namespace tolmtest
