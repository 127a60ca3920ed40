#pragma once

#include "StoreSupport/DatasetWorks.h"
#include "StoreSupport/RefreshFixture.h"

#include <span>
#include <string>
#include <vector>

namespace tolmtest {

class WorkFixture;

/// How an operation behaves that is cut off or fails.
struct WorkManner {
    bool mayBeRepeated = false; ///< says true also when it was done before
    bool makesTheFile = false;  ///< so that there may be none to read when it was cut off
    bool notes = false; ///< it notes a change beside the data, which goes unnoted where the status store does not open
    long tryOneOf = 1;  ///< of so many faults, where an operation has many
    /// Operations whose ends are states that this one passes through on disk by design, one after the other.
    std::vector<const char*> stages{};
    bool mayStay = false; ///< what was left behind in such a state is not made up for by doing it again
};

/// An operation on a dataset and what there is before it.
struct PreparedWork {
    /// Beginnings of warnings.
    using Warnings = std::span<const wchar_t* const>;

    const char* title;
    const char* name; ///< of the `DatasetWork`
    void (*prepare)(WorkFixture& fixture);
    std::vector<Warnings> mayWarnOf; ///< when its files fail
    WorkManner manner{};
};

const std::vector<PreparedWork>& PreparedWorks();
std::string PreparedWorkName(const testing::TestParamInfo<PreparedWork>& info);
inline void PrintTo(const PreparedWork& work, std::ostream* out) {
    *out << work.title;
}

/// A dataset, a service that answers what an operation needs, and the operations.
class WorkFixture : public RefreshFixture {
public:
    WorkFixture();
    ~WorkFixture() override;

    /// A cloud with two materials, at version 2.
    void FillCloud();
    /// Two materials that came from the cloud, at version 2.
    void Load();
    /// The cloud goes on: one material edited, one new, one gone.
    void CloudMoves();
    /// A cloud with records of most classes, at version 2.
    void FillCloudRichly();
    /// And what came from there.
    void LoadRichly();
    /// That cloud goes on: in each table one record edited, one new, one gone.
    void RichCloudMoves();
    /// The cloud removes the system type "y1" and a binary file.
    void CloudRemovesASystemType();
    /// The service takes what is sent. It says the same version before and after.
    void CloudTakes(int version);
    const wstring& Path() const { return path; }
    /// Paths of the requests that brought local changes to the service, since it was asked last.
    std::vector<std::string> TakeUploads();
    bool Run(const char* work) { return FindDatasetWork(work).run({path, combinedPath, filesFolder}); }

protected:
    const wstring filesFolder = folder.File(L"beside/files");

    void Prepare(const PreparedWork& work);

private:
    std::size_t m_requestsSeen = 0;
};

} // namespace tolmtest
