#include "StoreFixture.h"

namespace qbasetest {
namespace {

constexpr std::size_t kPage = 4096;

/// Two stores of many classes, so that their schema takes several pages.
class StoreBesideDamage : public StoreTest {
protected:
    void SetUp() override {
        std::string definition = "store-definition 1\n";
        for (char letter = 'A'; letter <= 'Z'; ++letter) {
            definition += std::string("class ") + letter + letter + letter + "\n";
            for (int i = 0; i < 20; ++i)
                definition += std::to_string(1601 + i) + " text A_name_of_some_length_" + std::to_string(i) + "\n";
        }
        WriteText(m_definition, definition);
        for (const auto& path : {m_path, m_second}) {
            CQbase qb;
            ASSERT_TRUE(qb.openDatabase(m_definition, path, true));
            ASSERT_TRUE(qb.closeDatabase());
        }
        m_whole = ReadBytes(m_second);
        ASSERT_EQ(ReadBytes(m_path), m_whole) << "what is compared is alike";
        ASSERT_GT(std::stoi(Sql(m_path, "SELECT count(*) FROM sqlite_schema")), 2);
    }

    /// Saves two records, one before and one after the second file joins. Both must be there in the end.
    bool OpensBeside(const std::wstring& id) {
        bool isOpen = false;
        Change([&](CQbase& qb) {
            Create(qb, id + L"1");
            {
                CQbase beside;
                isOpen = beside.openBeside(qb, m_definition, m_second, true);
            }
            Create(qb, id + L"2");
        });
        Look([&](CQbase& qb) {
            EXPECT_TRUE(qb.existRec("AAA", id + L"1"));
            EXPECT_TRUE(qb.existRec("AAA", id + L"2"));
        });
        return isOpen;
    }

    static void Create(CQbase& qb, const std::wstring& id) {
        EXPECT_TRUE(qb.createRec("AAA", id));
        EXPECT_TRUE(qb.saveRec());
    }

    std::wstring m_second = m_folder.File(L"second.db");
    std::string m_whole;
};

TEST_F(StoreBesideDamage, AWholeFileOpens) {
    EXPECT_TRUE(OpensBeside(L"a"));
    EXPECT_TRUE(OpensBeside(L"b")) << "also once it has changed less often than the first";
}

TEST_F(StoreBesideDamage, WhereverTheSchemaIsDamagedThePrimaryStands) {
    int number = 0;
    for (std::size_t at = 0; at < 4 * kPage; at += 211) {
        std::string damaged = m_whole;
        damaged[at] = static_cast<char>(~damaged[at]);
        WriteText(m_second, damaged);
        OpensBeside(std::to_wstring(++number) + L"-");
    }
}

TEST_F(StoreBesideDamage, APageOfTheSchemaThatIsNoPageKeepsItOut) {
    for (std::size_t page = 1; page < 4; ++page) {
        std::string damaged = m_whole;
        damaged.replace(page * kPage, kPage, std::string(kPage, '\xFF'));
        WriteText(m_second, damaged);
        OpensBeside(L"p" + std::to_wstring(page));
    }
    std::string damaged = m_whole;
    damaged.replace(100, kPage - 100, std::string(kPage - 100, '\xFF'));
    WriteText(m_second, damaged);
    EXPECT_FALSE(OpensBeside(L"first"));
}

TEST_F(StoreBesideDamage, AFileThatEndsTooSoonKeepsItOut) {
    for (std::size_t size = kPage; size < m_whole.size(); size += kPage) {
        WriteText(m_second, m_whole.substr(0, size));
        EXPECT_FALSE(OpensBeside(std::to_wstring(size))) << size;
    }
}

} // namespace
} // namespace qbasetest
