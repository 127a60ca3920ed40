#pragma once

#include "Qbase/Qbase.h"
#include "Support/TempFolder.h"
#include "Vorn/Text.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace qbasetest {

inline std::string Native(const std::wstring& path) {
    return vorn::StringUtil::ToString(path);
}

/// The definition of the tests: every type, an index over one attribute and one over two, and two classes that
/// share some attributes and not others.
inline constexpr const char* kDefinition = R"(store-definition 1
class AAA
1104 short MEPType
1181 short DisciplineId
1005 byte Flag
1200 long Version
1300 float Size
1400 double Roughness
1601 text Name
1504 text MaterialId
1607 text[] Ids
1302 float[] Sizes
1617 binary(12) Time
1614 binary(16)[] Pipes
index MaterialId
index MEPType DisciplineId
class BBB
1104 short MEPType
1601 text Title
class 000
1200 long LocalVersion
)";

inline constexpr short kMEPType = 1104;
inline constexpr short kDisciplineId = 1181;
inline constexpr short kFlag = 1005;
inline constexpr short kVersion = 1200;
inline constexpr short kSize = 1300;
inline constexpr short kRoughness = 1400;
inline constexpr short kName = 1601;
inline constexpr short kMaterialId = 1504;
inline constexpr short kIds = 1607;
inline constexpr short kSizes = 1302;
inline constexpr short kTime = 1617;
inline constexpr short kPipes = 1614;

inline void WriteText(const std::wstring& path, const std::string& text) {
    std::ofstream(Native(path), std::ios::binary) << text;
}

inline std::string ReadBytes(const std::wstring& path) {
    std::ifstream file(Native(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline bool Stands(const std::wstring& path) {
    return std::filesystem::exists(Native(path));
}

/// Runs SQL on a file past the library; yields the first column of the first row, if there is one.
inline std::string Sql(const std::wstring& path, const std::string& sql) {
    sqlite3* database = nullptr;
    std::string first;
    EXPECT_EQ(sqlite3_open(Native(path).c_str(), &database), SQLITE_OK);
    bool isFirst = true;
    const auto take = [&](int, char** values) {
        if (isFirst && values[0] != nullptr)
            first = values[0];
        isFirst = false;
    };
    using Take = decltype(take);
    char* error = nullptr;
    const int code = sqlite3_exec(
        database, sql.c_str(),
        [](void* context, int count, char** values, char**) {
            (*static_cast<Take*>(context))(count, values);
            return 0;
        },
        const_cast<void*>(static_cast<const void*>(&take)), &error);
    EXPECT_EQ(code, SQLITE_OK) << (error != nullptr ? error : "");
    sqlite3_free(error);
    sqlite3_close(database);
    return first;
}

inline QbaseError ErrorOf(const CQbase& qb) {
    return static_cast<QbaseError>(qb.getLastError());
}

/// A pipe between two processes, for taking turns.
class Turn {
public:
    Turn() { EXPECT_EQ(pipe(m_ends), 0); }
    ~Turn() {
        close(m_ends[0]);
        close(m_ends[1]);
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    void Give() const { EXPECT_EQ(write(m_ends[1], "x", 1), 1); }
    void Await() const {
        char byte = 0;
        EXPECT_EQ(read(m_ends[0], &byte, 1), 1);
    }

private:
    int m_ends[2] = {-1, -1};
};

/// A child process that does its work when it is told to. It must be made before this process holds a store: a child
/// takes over what the process believes of its locks, and not the locks.
class Child {
public:
    explicit Child(const std::function<bool()>& work) : m_process(fork()) {
        if (m_process == 0) {
            m_start.Await();
            _exit(work() ? 0 : 1);
        }
    }
    ~Child() {
        if (m_process > 0)
            Run();
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Lets it work; true when the work came to its end and was true.
    bool Run() {
        m_start.Give();
        int status = 0;
        const bool ended = waitpid(std::exchange(m_process, 0), &status, 0) > 0;
        return ended && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    Turn m_start;
    pid_t m_process;
};

/// Runs the work in a child process; true when it returned true there.
inline bool InChild(const std::function<bool()>& work) {
    return Child(work).Run();
}

/// A definition file and the path of a store that does not stand yet.
class StoreTest : public testing::Test {
protected:
    StoreTest() { WriteText(m_definition, kDefinition); }
    ~StoreTest() override { CQbase::setLockTimeout(5000); }

    bool Open(CQbase& qb, bool create = true) { return qb.openDatabase(m_definition, m_path, create); }

    /// Opens the store for update, creating it, and lets the work be done and committed.
    void Change(const std::function<void(CQbase&)>& work) {
        CQbase qb;
        ASSERT_TRUE(Open(qb));
        ASSERT_TRUE(qb.lockForUpdate());
        work(qb);
        ASSERT_TRUE(qb.closeDatabase());
    }

    /// Opens the store for reading.
    void Look(const std::function<void(CQbase&)>& work) {
        CQbase qb;
        ASSERT_TRUE(Open(qb, false));
        ASSERT_TRUE(qb.lockForRead());
        work(qb);
        ASSERT_TRUE(qb.closeDatabase());
    }

    /// A record with a type and a name.
    static void Add(CQbase& qb, const char* classCode, const wchar_t* id, short type = 0) {
        ASSERT_TRUE(qb.createRec(classCode, id));
        ASSERT_TRUE(qb.setShort(kMEPType, type));
        ASSERT_TRUE(qb.saveRec());
    }

    static std::wstring IdOf(CQbase& qb) {
        CWsz id;
        return qb.getObjId(id) ? id.str() : L"(none)";
    }

    /// The ids of a walk: a first and a next fetch.
    static std::vector<std::wstring> Walk(CQbase& qb, const char* classCode) {
        std::vector<std::wstring> ids;
        for (bool found = qb.fetchFirstMember(classCode); found; found = qb.fetchNextMember())
            ids.push_back(IdOf(qb));
        return ids;
    }

    tolmtest::TempFolder m_folder;
    std::wstring m_definition = m_folder.File(L"test.ddq");
    std::wstring m_path = m_folder.File(L"set.db");
    std::wstring m_second = m_folder.File(L"set_Status.db");
};

using Ids = std::vector<std::wstring>;

} // namespace qbasetest
