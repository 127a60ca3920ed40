#include "StoreFixture.h"

#include <random>

namespace qbasetest {
namespace {

class StoreDamage : public StoreTest {
protected:
    StoreDamage() {
        CQbase::setLockTimeout(50);
        Change([](CQbase& qb) {
            const std::string list(16 * 300, 'p');
            for (int i = 0; i < 60; ++i) {
                const std::wstring id = L"record " + std::to_wstring(i);
                ASSERT_TRUE(qb.createRec("AAA", id) && qb.setShort(kMEPType, static_cast<short>(i % 3)));
                ASSERT_TRUE(qb.setShort(kDisciplineId, 1) && qb.setWsz(kName, id.c_str(), -1));
                ASSERT_TRUE(qb.setBinaryArray(kPipes, list.data(), i % 7 == 0 ? 300 : 2, 0) && qb.saveRec());
                Add(qb, "BBB", id.c_str(), 1);
            }
        });
        m_whole = ReadBytes(m_path);
    }

    /// Reads all there is, in every way; whatever comes out, nothing may crash, hang or throw.
    void ReadAll() {
        CQbase qb;
        if (!Open(qb, false) || !qb.lockForRead())
            return;
        std::size_t left = 1000;
        for (bool found = qb.fetchFirstMember("AAA"); found && left > 0; found = qb.fetchNextRec(), --left)
            ReadRecord(qb);
        qb.setFilter(kMEPType, "=", short{1});
        qb.setFilter(kDisciplineId, "=", short{1});
        for (bool found = qb.fetchFirstMember("AAA"); found && left > 0; found = qb.fetchNextMember(), --left)
            ReadRecord(qb);
        long count = 0;
        qb.getNmbOfRecs(count);
        for (int i = 0; i < 60; ++i)
            qb.fetchEqualRec("BBB", L"record " + std::to_wstring(i));
        qb.closeDatabase();
    }

    static void ReadRecord(CQbase& qb) {
        CWsz text;
        short value = 0;
        CByteBuffer bytes;
        int length = 0;
        qb.getObjId(text);
        qb.getWsz(kName, text, 1);
        qb.getShort(kMEPType, value);
        if (qb.getBinaryArray(kPipes, bytes, length)) {
            EXPECT_EQ(length, bytes.dataLen());
        }
    }

    /// Changes all there is, and takes it back.
    void ChangeAll() {
        CQbase qb;
        if (!Open(qb, false) || !qb.lockForUpdate())
            return;
        for (int i = 0; i < 60; ++i) {
            const std::wstring id = L"record " + std::to_wstring(i);
            if (qb.fetchEqualRec("AAA", id) && qb.setDouble(kRoughness, i))
                qb.saveRec();
            qb.deleteRec("BBB", id);
        }
        for (int i = 0; i < 20; ++i)
            if (qb.createRec("AAA", L"new " + std::to_wstring(i)))
                qb.saveRec();
        qb.abandon();
    }

    std::string m_whole;
};

TEST_F(StoreDamage, ATruncatedFileDoesNotOpenAndStaysAsItIs) {
    for (std::size_t size = 1; size < m_whole.size(); size = size * 5 / 3 + 1) {
        const std::string part = m_whole.substr(0, size);
        WriteText(m_path, part);
        CQbase qb;
        EXPECT_FALSE(Open(qb)) << size;
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore) << size;
        EXPECT_TRUE(qb.closeDatabase());
        EXPECT_EQ(ReadBytes(m_path), part) << size;
        EXPECT_FALSE(Stands(m_path + L"-journal"));
    }
}

TEST_F(StoreDamage, AFileOfZerosDoesNotOpenAndStaysAsItIs) {
    const std::string zeros(m_whole.size(), '\0');
    WriteText(m_path, zeros);
    CQbase qb;
    EXPECT_FALSE(Open(qb));
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore);
    EXPECT_EQ(ReadBytes(m_path), zeros);
}

TEST_F(StoreDamage, FlippedBytesCrashNothing) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::size_t> anywhere(0, m_whole.size() - 1);
    std::uniform_int_distribution<std::size_t> inHeader(0, 1000);
    for (int round = 0; round < 150; ++round) {
        std::string damaged = m_whole;
        for (int i = 0; i < 1 + round % 8; ++i)
            damaged[round % 2 == 0 ? anywhere(random) : inHeader(random)] = static_cast<char>(random());
        WriteText(m_path, damaged);
        ReadAll();
        ASSERT_EQ(ReadBytes(m_path), damaged) << "reading changes nothing; round " << round;
        ChangeAll();
    }
}

TEST_F(StoreDamage, ADamagedPageDoomsTheHandleAndIsNotTakenForNoSuchRecord) {
    std::string damaged = m_whole;
    for (std::size_t page = 4096 * 2; page < damaged.size(); page += 4096)
        damaged[page] = '\x7f'; // no kind of page
    WriteText(m_path, damaged);
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    EXPECT_FALSE(qb.existRec("AAA", L"record 1"));
    EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore);
    EXPECT_FALSE(qb.existRec("BBB", L"record 1"));
    EXPECT_EQ(ErrorOf(qb), QbaseError::Doomed);
    EXPECT_FALSE(qb.closeDatabase());
    EXPECT_EQ(ReadBytes(m_path), damaged);
}

TEST_F(StoreDamage, AJournalThatIsNoneHurtsNothing) {
    WriteText(m_path + L"-journal", std::string(3000, 'j'));
    Look([](CQbase& qb) { EXPECT_TRUE(qb.existRec("AAA", L"record 1")); });
    Change([](CQbase& qb) { Add(qb, "AAA", L"more"); });
    EXPECT_EQ(Sql(m_path, "PRAGMA integrity_check"), "ok");
}

} // namespace
} // namespace qbasetest
