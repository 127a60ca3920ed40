#include "StoreSupport/RefreshFixture.h"
#include "Vorn/Text.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

/// Names of files as a cloud should not give them, in a refresh whose folder of files is the dataset's own.
namespace tolmtest {
namespace {

namespace fs = std::filesystem;

/// As they stand in JSON.
const std::string kHostileNames[] = {"../x",
                                     "..\\\\x",
                                     "../../x",
                                     "sub/x",
                                     "sub\\\\..\\\\..\\\\x",
                                     "./x",
                                     "/tmp/x",
                                     "C:\\\\x",
                                     "C:x",
                                     "\\\\\\\\host\\\\share\\\\x",
                                     "file:///x",
                                     "",
                                     ".",
                                     "..",
                                     "...",
                                     " ",
                                     "x ",
                                     "x.",
                                     "x\\u0000.txt",
                                     "\\u0000",
                                     "x\\n",
                                     "x\\ty",
                                     "\\u001b[2Jx",
                                     "x\\u007f",
                                     "x\\u0085",
                                     "x\\u202egpj.exe",
                                     "\\u2066x\\u2069",
                                     "CON",
                                     "con.txt",
                                     "NUL",
                                     "Aux.tar.gz",
                                     "COM1",
                                     "LPT9.x",
                                     "x:stream",
                                     "x*",
                                     "x?",
                                     "<x>",
                                     "x|y",
                                     "x\\\"y",
                                     "set.db",
                                     "SET.DB",
                                     "set.db-journal",
                                     "set.db-wal",
                                     "set.db-shm",
                                     "set_Status.db",
                                     "set_Status.db-journal",
                                     "set_temp.db",
                                     "set_Status_temp.db",
                                     "set_temp.db-journal",
                                     "combined.db",
                                     "combined.db-journal",
                                     "sub",
                                     "link",

                                     "..\\u2215x/../../x"};

std::string Rows(const std::string& name, bool withData) {
    return R"({"fileName":")" + name + "\"" + (withData ? R"(,"length":4,"data":"ZXZpbA==")" : "") + "}";
}

class HostileNames : public RefreshFixture {
protected:
    using Files = std::map<std::string, std::string>;

    void SetUp() override {
        fs::create_directories(Native(L"in/sub"));
        for (const wchar_t* name : {L"x", L"in/sub/x", L"in/kept", L"in/combined.db"})
            std::ofstream(Native(name)) << "precious";
        fs::create_symlink(Native(L"x"), Native(L"in/link"));
        tolm::TolmFilePathSettings::SetCurrentDatasetFilePath(dataset);
        CloudHas(1, R"({"ConfigTree":[{"ID":"m1","groupName":"MaterialSeries","parentID":"","text":"n"}]})", "{}");
        ASSERT_TRUE(RefreshDataset());
        TakeNotifications();
        before = FilesNow();
    }

    std::string Native(const wstring& name) const { return vorn::FileSystem::ToNative(folder.File(name)); }

    bool RefreshDataset() {
        return util.SyncDataFromCloud(false, nullptr, dataset, ddq, folder.File(L"in/combined.db"), folder.File(L"in"),
                                      nullptr);
    }

    /// All files but the dataset, whose version moves on.
    Files FilesNow() const {
        Files files;
        for (const auto& entry : fs::recursive_directory_iterator(Native(L"."))) {
            if (!entry.is_regular_file() || entry.path().filename() == "set.db")
                continue;
            std::ifstream in(entry.path(), std::ios::binary);
            files[entry.path().string()] = {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        }
        return files;
    }

    /// Expects that the row was refused, told of once, and cost nothing else.
    void ExpectRefused(const std::string& name, const wchar_t* warning) {
        EXPECT_EQ(TakeDebugWarnings(), Warnings{warning}) << name;
        const auto lines = TakeLogLines();
        ASSERT_EQ(lines.size(), 2U) << name;
        EXPECT_EQ(lines[0].find(L"The name is not that of a file that the cloud may change: "), 0U) << name;
        EXPECT_EQ(lines[1], warning);
        EXPECT_EQ(TakeNotifications(), Loaded);
        EXPECT_EQ(FilesNow(), before) << name;
        EXPECT_EQ(SqlValue(dataset, "SELECT group_concat(Name) FROM MTS"), "n") << name;
    }

    const wstring dataset = folder.File(L"in/set.db");
    Files before;
    int version = 1;
};

TEST_F(HostileNames, WriteNothing) {
    for (const std::string& name : kHostileNames) {
        CloudHas(++version, R"({"BinaryTable":[)" + Rows(name, true) + "]}", "{}");
        EXPECT_TRUE(RefreshDataset());
        ExpectRefused(name, L"BinaryTable:下载文件失败");
    }
}

TEST_F(HostileNames, RemoveNothing) {
    for (const std::string& name : kHostileNames) {
        CloudHas(++version, "{}", R"({"ConfigTree":[],"BinaryTable":[)" + Rows(name, false) + "]}");
        EXPECT_TRUE(RefreshDataset());
        ExpectRefused(name, L"删除单文件失败");
    }
}

TEST_F(HostileNames, AreThoseThatAreTooLong) {
    for (const std::size_t length : {std::size_t{256}, std::size_t{5000}, std::size_t{1'000'000}}) {
        CloudHas(++version, R"({"BinaryTable":[)" + Rows(std::string(length, 'x'), true) + "]}", "{}");
        EXPECT_TRUE(RefreshDataset());
        ExpectRefused(std::to_string(length), L"BinaryTable:下载文件失败");
    }
}

TEST_F(HostileNames, CostTheirNeighboursNothing) {
    std::string rows;
    for (const std::string& name : kHostileNames)
        rows += Rows(name, true) + ",";
    CloudHas(2, R"({"BinaryTable":[)" + rows + Rows("good", true) + "]}", "{}");
    EXPECT_TRUE(RefreshDataset());
    EXPECT_EQ(TakeDebugWarnings(), Warnings(std::size(kHostileNames), L"BinaryTable:下载文件失败"));
    before[Native(L"./in/good")] = "evil";
    EXPECT_EQ(FilesNow(), before);
}

} // namespace
} // namespace tolmtest
