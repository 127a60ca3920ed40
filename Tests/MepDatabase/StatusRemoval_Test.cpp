#include "MepDatabase/StoreFrame.h"
#include "StoreSupport/LockTimeout.h"
#include "StoreSupport/MergeFixture.h"
#include "Support/FaultyFiles.h"

#include <functional>
#include <thread>

namespace tolmtest {
namespace {

using Lines = std::vector<std::string>;

/// What somebody else does when the handle of this number is made, counted from the beginning of its life.
class AtHandle {
public:
    AtHandle(int number, std::function<void()> action) {
        s_left = number;
        s_action = std::move(action);
        tolm::StoreFrame::SetMaker(Make);
    }
    ~AtHandle() { tolm::StoreFrame::SetMaker(nullptr); }
    AtHandle(const AtHandle&) = delete;
    AtHandle& operator=(const AtHandle&) = delete;

private:
    static vorn::OwnerPtr<CQbase> Make() {
        if (--s_left == 0)
            s_action();
        return vorn::MakeOwner<CQbase>();
    }
    static inline int s_left = 0;
    static inline std::function<void()> s_action;
};

/// The moment in which a status store without further use is removed.
class StatusRemoval : public MergeFixture {
protected:
    StatusRemoval() {
        Synced({L"a"});
        Edits(L"a", L"mine");
        CloudEdits(L"a", L"theirs");
        server.On("/api/UpLoad/", ScriptedAnswer::Data(R"({"version":8})"));
        server.On("/api/EditList/", ScriptedAnswer::Data("null"));
    }

    /// Lets another thread edit in the moment before the status store is deleted, without waiting for a lock.
    void LetSomebodyEdit() {
        files.BeforeDeletions([this](const std::string& deleted) {
            if (deleted != vorn::FileSystem::ToNative(statusPath))
                return;
            ++removals;
            std::thread([this] {
                const auto material = Material(L"b", L"meanwhile");
                editedMeanwhile = editedMeanwhile || util.WriteMaterial(path, ddq, material.get());
            }).join();
        });
    }
    /// Somebody was there, and could not edit; now he can, and that is noted.
    void ExpectNobodyCouldEdit() {
        EXPECT_EQ(removals, 1);
        EXPECT_FALSE(editedMeanwhile);
        EXPECT_FALSE(Exists(statusPath));
        Edits(L"b", L"afterwards");
        EXPECT_EQ(StatusRecords(), Lines{"MTS b 1 1 2"});
    }
    bool Send(bool tableByTable) {
        return util.SendModifiedDataToCloud(false, nullptr, path, ddq, combinedPath, tableByTable);
    }

    FaultyFiles files{folder.Path()};
    const LockTimeout atOnce{0};
    int removals = 0;
    bool editedMeanwhile = false;
};

TEST_F(StatusRemoval, BehindAMergeIsLeftOutWhereSomebodyHasEditedAgain) {
    Lines materials;
    {
        const AtHandle third(3, [&] { // the first two are those on the copies
            materials = Materials();
            Edits(L"b", L"meanwhile");
        });
        EXPECT_TRUE(Merge());
    }
    EXPECT_EQ(materials, Lines{"a theirs"}) << "the stores are replaced by then";
    EXPECT_EQ(StatusRecords(), Lines{"MTS b 1 1 2"});
    EXPECT_EQ(Materials(), (Lines{"a theirs", "b meanwhile"}));
}

TEST_F(StatusRemoval, BehindAMergeHappensWhileNobodyCanEdit) {
    LetSomebodyEdit();
    EXPECT_TRUE(Merge());
    ExpectNobodyCouldEdit();
}

TEST_F(StatusRemoval, BehindAnUploadHappensWhileNobodyCanEdit) {
    LetSomebodyEdit();
    EXPECT_TRUE(Send(false));
    ExpectNobodyCouldEdit();
}

TEST_F(StatusRemoval, BehindAnUploadTableByTableHappensWhileNobodyCanEdit) {
    LetSomebodyEdit();
    EXPECT_TRUE(Send(true));
    ExpectNobodyCouldEdit();
}

} // namespace
} // namespace tolmtest
