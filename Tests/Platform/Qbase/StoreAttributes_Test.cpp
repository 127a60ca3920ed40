#include "StoreFixture.h"

#include <array>
#include <cmath>
#include <limits>

namespace qbasetest {
namespace {

class StoreAttributes : public StoreTest {
protected:
    /// Lets the work set attributes of a new record, and looks at it twice: before it is saved, and in the file.
    void RoundTrip(const std::function<void(CQbase&)>& set, const std::function<void(CQbase&)>& look) {
        Change([&](CQbase& qb) {
            ASSERT_TRUE(qb.createRec("AAA", L"x"));
            set(qb);
            look(qb);
            ASSERT_TRUE(qb.saveRec());
            look(qb);
        });
        Look([&](CQbase& qb) {
            ASSERT_TRUE(qb.fetchEqualRec("AAA", L"x"));
            look(qb);
        });
    }
};

TEST_F(StoreAttributes, NumbersComeBackAsTheyWereSet) {
    RoundTrip(
        [](CQbase& qb) {
            EXPECT_TRUE(qb.setByte(kFlag, 255));
            EXPECT_TRUE(qb.setShort(kMEPType, -32768));
            EXPECT_TRUE(qb.setLong(kVersion, std::numeric_limits<long>::min()));
            EXPECT_TRUE(qb.setFloat(kSize, 0.1f));
            EXPECT_TRUE(qb.setDouble(kRoughness, 0.1));
        },
        [](CQbase& qb) {
            unsigned char byte = 0;
            short small = 0;
            long large = 0;
            float single = 0;
            double real = 0;
            EXPECT_TRUE(qb.getByte(kFlag, byte) && byte == 255);
            EXPECT_TRUE(qb.getShort(kMEPType, small) && small == -32768);
            EXPECT_TRUE(qb.getLong(kVersion, large) && large == std::numeric_limits<long>::min());
            EXPECT_TRUE(qb.getFloat(kSize, single) && single == 0.1f);
            EXPECT_TRUE(qb.getDouble(kRoughness, real) && real == 0.1);
        });
}

TEST_F(StoreAttributes, AWholeNumberInAFloatingColumnComesBack) {
    RoundTrip([](CQbase& qb) { EXPECT_TRUE(qb.setDouble(kRoughness, 1700000000000.0) && qb.setFloat(kSize, 3.0f)); },
              [](CQbase& qb) {
                  double real = 0;
                  float single = 0;
                  EXPECT_TRUE(qb.getDouble(kRoughness, real) && real == 1700000000000.0);
                  EXPECT_TRUE(qb.getFloat(kSize, single) && single == 3.0f);
              });
}

TEST_F(StoreAttributes, NumbersThatAreNotFiniteAreClamped) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr float mostFloat = std::numeric_limits<float>::max();
    const auto expect = [](CQbase& qb, double wanted, float wantedFloat) {
        double real = 1;
        float single = 1;
        EXPECT_TRUE(qb.getDouble(kRoughness, real) && real == wanted);
        EXPECT_TRUE(qb.getFloat(kSize, single) && single == wantedFloat);
    };
    Change([&](CQbase& qb) {
        ASSERT_TRUE(qb.createRec("AAA", L"x"));
        ASSERT_TRUE(qb.setDouble(kRoughness, std::nan("")) && qb.setFloat(kSize, std::nanf("")) && qb.saveRec());
        expect(qb, 0, 0);
        ASSERT_TRUE(qb.setDouble(kRoughness, infinity) && qb.setFloat(kSize, HUGE_VALF) && qb.saveRec());
        expect(qb, std::numeric_limits<double>::max(), mostFloat);
        ASSERT_TRUE(qb.setDouble(kRoughness, -infinity) && qb.setFloat(kSize, -HUGE_VALF) && qb.saveRec());
        expect(qb, std::numeric_limits<double>::lowest(), -mostFloat);
    });
}

TEST_F(StoreAttributes, NumbersInTheFileThatDoNotFitAreClamped) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Sql(m_path, "UPDATE AAA SET Flag=300,MEPType=-40000,Size=1e300,Roughness=9e999,Version=9223372036854775807");
    Look([](CQbase& qb) {
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        unsigned char byte = 0;
        short small = 0;
        float single = 0;
        double real = 0;
        EXPECT_TRUE(qb.getByte(kFlag, byte) && byte == 255);
        EXPECT_TRUE(qb.getShort(kMEPType, small) && small == -32768);
        EXPECT_TRUE(qb.getFloat(kSize, single) && single == std::numeric_limits<float>::max());
        EXPECT_TRUE(qb.getDouble(kRoughness, real) && real == std::numeric_limits<double>::max());
    });
}

TEST_F(StoreAttributes, TextComesBackWhateverItHolds) {
    const std::wstring wild = std::wstring(L"管道 \"'\\\n\t\u00e9\U0001F600") + L'\0' + L"after";
    RoundTrip(
        [&](CQbase& qb) {
            EXPECT_TRUE(qb.setWsz(kName, wild.c_str(), static_cast<int>(wild.size())));
            EXPECT_TRUE(qb.setWsz(kMaterialId, L"cut here", 3));
        },
        [&](CQbase& qb) {
            CWsz text;
            EXPECT_TRUE(qb.getWsz(kName, text, 1));
            EXPECT_EQ(text.str(), wild);
            EXPECT_TRUE(qb.getWsz(kMaterialId, text, 1));
            EXPECT_EQ(text.str(), L"cut");
        });
}

TEST_F(StoreAttributes, TextThatIsNoUnicodeGetsTheReplacementCharacter) {
    const std::wstring broken{L'a', static_cast<wchar_t>(0xd800), static_cast<wchar_t>(0x110000), L'b'};
    RoundTrip([&](CQbase& qb) { EXPECT_TRUE(qb.setWsz(kName, broken.c_str(), -1)); },
              [](CQbase& qb) {
                  CWsz text;
                  EXPECT_TRUE(qb.getWsz(kName, text, 1));
                  EXPECT_EQ(text.str().front(), L'a');
                  EXPECT_EQ(text.str().back(), L'b');
              });
}

TEST_F(StoreAttributes, AnEmptyTextIsNotAMissingOne) {
    RoundTrip([](CQbase& qb) { EXPECT_TRUE(qb.setWsz(kName, L"", -1)); },
              [](CQbase& qb) {
                  CWsz text(L"before");
                  EXPECT_TRUE(qb.getWsz(kName, text, 1));
                  EXPECT_TRUE(text.isEmpty());
                  text = L"before";
                  EXPECT_FALSE(qb.getWsz(kMaterialId, text, 1));
                  EXPECT_EQ(text.str(), L"before");
              });
}

TEST_F(StoreAttributes, TextListsComeBackWhateverTheyHold) {
    CWszArray texts;
    const std::wstring zero(L"a\0b", 3);
    for (const std::wstring& text :
         {std::wstring(L""), std::wstring(L"\"quoted\" \\ /"), std::wstring(L"两\n行\x1"), zero})
        texts.append(CWsz(text));
    RoundTrip([&](CQbase& qb) { EXPECT_TRUE(qb.setWszArray(kIds, texts, -1)); },
              [&](CQbase& qb) {
                  CWszArray read;
                  ASSERT_TRUE(qb.getWszArray(kIds, read, 100, -1));
                  ASSERT_EQ(read.length(), texts.length());
                  for (int i = 0; i < read.length(); ++i)
                      EXPECT_EQ(read.wszAt(i).str(), texts.wszAt(i).str());
              });
}

TEST_F(StoreAttributes, ATextListIsReadableJsonInTheFile) {
    CWszArray texts;
    texts.append(L"a\"b");
    texts.append(L"管");
    Change(
        [&](CQbase& qb) { ASSERT_TRUE(qb.createRec("AAA", L"x") && qb.setWszArray(kIds, texts, -1) && qb.saveRec()); });
    EXPECT_EQ(Sql(m_path, "SELECT Ids FROM AAA"), "[\"a\\\"b\",\"管\"]");
    EXPECT_EQ(Sql(m_path, "SELECT json_extract(Ids,'$[0]') FROM AAA"), "a\"b");
}

TEST_F(StoreAttributes, ATextListThatAPersonWroteIsRead) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    Sql(m_path, R"(UPDATE AAA SET Ids=' [ "\u7BA1\ud83d\ude00\/" , "\b\f\n\r\t" ] ')");
    Look([](CQbase& qb) {
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        CWszArray read;
        ASSERT_TRUE(qb.getWszArray(kIds, read, 100, -1));
        ASSERT_EQ(read.length(), 2);
        EXPECT_EQ(read.wszAt(0).str(), L"管\U0001F600/");
        EXPECT_EQ(read.wszAt(1).str(), L"\b\f\n\r\t");
    });
}

TEST_F(StoreAttributes, ATextListThatIsNoneFailsAndLeavesTheValue) {
    for (const char* wrong :
         {"", "[", "[1]", "[\"a\"", "[\"a]", "[\"a\",]", "[\"\\x\"]", "[\"\\u12\"]", "[\"\\udc00\"]", "[\"\\ud800\"]",
          "[\"\\ud800\\u0041\"]", "[\"a\"]b", "{}", "[\"\\", "[\"\\uZZZZ\"]"}) {
        CQbase::removeStore(m_path);
        Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
        Sql(m_path, "UPDATE AAA SET Ids='" + std::string(wrong) + "'");
        Look([&](CQbase& qb) {
            ASSERT_TRUE(qb.fetchFirstMember("AAA"));
            CWszArray read;
            read.append(L"before");
            EXPECT_FALSE(qb.getWszArray(kIds, read, 100, -1)) << wrong;
            EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore);
            EXPECT_EQ(read.find(L"before"), 0);
        });
    }
}

TEST_F(StoreAttributes, ATextListGivesBackAtMostAsManyAsAsked) {
    CWszArray texts;
    for (int i = 0; i < 120; ++i)
        texts.append(std::to_wstring(i));
    RoundTrip([&](CQbase& qb) { EXPECT_TRUE(qb.setWszArray(kIds, texts, -1)); },
              [](CQbase& qb) {
                  CWszArray read;
                  EXPECT_TRUE(qb.getWszArray(kIds, read, 100, -1));
                  EXPECT_EQ(read.length(), 100);
                  EXPECT_EQ(read.wszAt(99).str(), L"99");
                  EXPECT_TRUE(qb.getWszArray(kIds, read, 0, -1));
                  EXPECT_EQ(read.length(), 0);
              });
}

TEST_F(StoreAttributes, FloatListsComeBackAndAreFinite) {
    const std::array<float, 4> values{1.5f, -0.0f, std::nanf(""), HUGE_VALF};
    RoundTrip([&](CQbase& qb) { EXPECT_TRUE(qb.setFloatArray(kSizes, values.data(), 4)); },
              [](CQbase& qb) {
                  CFloatArray read;
                  ASSERT_TRUE(qb.getFloatArray(kSizes, read));
                  ASSERT_EQ(read.length(), 4);
                  EXPECT_EQ(read.valueAt(0), 1.5f);
                  EXPECT_EQ(read.valueAt(2), 0.0f);
                  EXPECT_EQ(read.valueAt(3), std::numeric_limits<float>::max());
              });
    EXPECT_EQ(Sql(m_path, "SELECT hex(substr(Sizes,1,4)) FROM AAA"), "0000C03F") << "least significant byte first";
}

TEST_F(StoreAttributes, ABinaryHasTheSizeOfItsDefinition) {
    const char time[12] = {1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 7};
    RoundTrip([&](CQbase& qb) { EXPECT_TRUE(qb.setBinary(kTime, time, 0)); },
              [&](CQbase& qb) {
                  char read[13] = {};
                  read[12] = 99;
                  EXPECT_TRUE(qb.getBinary(kTime, read));
                  EXPECT_EQ(std::string(read, 12), std::string(time, 12));
                  EXPECT_EQ(read[12], 99);
              });
}

TEST_F(StoreAttributes, ABinaryOfAnotherLengthIsRefused) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x"); });
    for (const char* bytes : {"x''", "x'00112233'", "zeroblob(13)", "zeroblob(100000)"}) {
        Sql(m_path, std::string("UPDATE AAA SET Time=") + bytes);
        Look([&](CQbase& qb) {
            ASSERT_TRUE(qb.fetchFirstMember("AAA"));
            std::array<char, 12> read{};
            read.fill(7);
            EXPECT_FALSE(qb.getBinary(kTime, read.data())) << bytes;
            EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore);
            EXPECT_EQ(read.back(), 7);
        });
    }
}

TEST_F(StoreAttributes, ABinaryListIsCountedInEntriesWhenSetAndInBytesWhenRead) {
    const std::string bytes(48, 'p');
    RoundTrip([&](CQbase& qb) { EXPECT_TRUE(qb.setBinaryArray(kPipes, bytes.data(), 3, 0)); },
              [&](CQbase& qb) {
                  CByteBuffer read;
                  int length = 0;
                  EXPECT_TRUE(qb.getBinaryArray(kPipes, read, length));
                  EXPECT_EQ(length, 48);
                  EXPECT_EQ(std::string(read.data(), static_cast<std::size_t>(read.dataLen())), bytes);
              });
}

TEST_F(StoreAttributes, AnEmptyListIsNotAMissingOne) {
    RoundTrip(
        [](CQbase& qb) {
            EXPECT_TRUE(qb.setBinaryArray(kPipes, nullptr, 0, 0));
            EXPECT_TRUE(qb.setFloatArray(kSizes, nullptr, 0));
            EXPECT_TRUE(qb.setWszArray(kIds, CWszArray(), -1));
        },
        [](CQbase& qb) {
            CByteBuffer bytes;
            int length = 5;
            CFloatArray floats;
            CWszArray texts;
            EXPECT_TRUE(qb.getBinaryArray(kPipes, bytes, length) && length == 0);
            EXPECT_TRUE(qb.getFloatArray(kSizes, floats) && floats.length() == 0);
            EXPECT_TRUE(qb.getWszArray(kIds, texts, 100, -1) && texts.length() == 0);
        });
}

TEST_F(StoreAttributes, AMissingAttributeLeavesTheValue) {
    RoundTrip([](CQbase&) {},
              [](CQbase& qb) {
                  unsigned char byte = 1;
                  short small = 2;
                  long large = 3;
                  float single = 4;
                  double real = 5;
                  int length = 6;
                  char time[12] = {7};
                  CByteBuffer bytes;
                  CFloatArray floats;
                  CWszArray texts;
                  bytes.assign("x", 1);
                  floats.append(1);
                  texts.append(L"x");
                  EXPECT_FALSE(qb.getByte(kFlag, byte) || qb.getShort(kMEPType, small) || qb.getLong(kVersion, large) ||
                               qb.getFloat(kSize, single) || qb.getDouble(kRoughness, real) ||
                               qb.getBinaryArray(kPipes, bytes, length) || qb.getBinary(kTime, time) ||
                               qb.getFloatArray(kSizes, floats) || qb.getWszArray(kIds, texts, 100, -1));
                  EXPECT_EQ(ErrorOf(qb), QbaseError::NotFound);
                  EXPECT_TRUE(byte == 1 && small == 2 && large == 3 && single == 4 && real == 5 && length == 6);
                  EXPECT_TRUE(time[0] == 7 && bytes.dataLen() == 1 && floats.length() == 1 && texts.length() == 1);
              });
}

TEST_F(StoreAttributes, AnotherTypeIsRefused) {
    RoundTrip([](CQbase& qb) { EXPECT_TRUE(qb.setShort(kMEPType, 3) && qb.setWsz(kName, L"n", -1)); },
              [](CQbase& qb) {
                  EXPECT_FALSE(qb.setLong(kMEPType, 9));
                  EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
                  EXPECT_FALSE(qb.setByte(kMEPType, 9));
                  EXPECT_FALSE(qb.setShort(kName, 9));
                  EXPECT_FALSE(qb.setWsz(kIds, L"x", -1));
                  EXPECT_FALSE(qb.setFloat(kRoughness, 1));
                  EXPECT_FALSE(qb.setDouble(kSize, 1));
                  EXPECT_FALSE(qb.setBinary(kPipes, "0123456789abcdef", 0));
                  EXPECT_FALSE(qb.setBinaryArray(kTime, "0123456789ab", 1, 0));
                  EXPECT_FALSE(qb.setFloatArray(kSize, nullptr, 0));
                  EXPECT_FALSE(qb.setWszArray(kName, CWszArray(), -1));
                  long large = 0;
                  EXPECT_FALSE(qb.getLong(kMEPType, large));
                  EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
                  short small = 0;
                  EXPECT_TRUE(qb.getShort(kMEPType, small) && small == 3);
              });
}

TEST_F(StoreAttributes, AnAttributeThatTheClassLacksIsRefused) {
    Change([](CQbase& qb) {
        Add(qb, "BBB", L"x");
        EXPECT_FALSE(qb.setDouble(kRoughness, 1));
        EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
        double value = 0;
        EXPECT_FALSE(qb.getDouble(kRoughness, value));
        EXPECT_FALSE(qb.removeAttribute(kRoughness));
    });
}

TEST_F(StoreAttributes, ArgumentsThatCannotBeAreRefused) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x");
        const float one = 1;
        EXPECT_FALSE(qb.setWsz(kName, nullptr, -1));
        EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
        EXPECT_FALSE(qb.setWsz(kName, L"x", -2));
        EXPECT_FALSE(qb.setFloatArray(kSizes, &one, -1));
        EXPECT_FALSE(qb.setFloatArray(kSizes, nullptr, 1));
        EXPECT_FALSE(qb.setBinary(kTime, nullptr, 0));
        EXPECT_FALSE(qb.setBinaryArray(kPipes, &one, -1, 0));
        EXPECT_FALSE(qb.setBinaryArray(kPipes, nullptr, 1, 0));
        EXPECT_FALSE(qb.getBinary(kTime, nullptr));
        EXPECT_EQ(ErrorOf(qb), QbaseError::BadArgument);
    });
}

TEST_F(StoreAttributes, AValueOfAnotherKindInTheFileFailsAndHurtsNothingElse) {
    Change([](CQbase& qb) { Add(qb, "AAA", L"x", 4); });
    Sql(m_path, "UPDATE AAA SET Version='many',Name=x'00ff',Size='big',Sizes=x'001122',Pipes='text'");
    Look([](CQbase& qb) {
        ASSERT_TRUE(qb.fetchFirstMember("AAA"));
        long large = 0;
        CWsz text;
        float single = 0;
        CFloatArray floats;
        CByteBuffer bytes;
        int length = 0;
        EXPECT_FALSE(qb.getLong(kVersion, large));
        EXPECT_EQ(ErrorOf(qb), QbaseError::NotAStore);
        EXPECT_FALSE(qb.getWsz(kName, text, 1));
        EXPECT_FALSE(qb.getFloat(kSize, single));
        EXPECT_FALSE(qb.getFloatArray(kSizes, floats));
        EXPECT_FALSE(qb.getBinaryArray(kPipes, bytes, length));
        short small = 0;
        EXPECT_TRUE(qb.getShort(kMEPType, small) && small == 4);
    });
}

TEST_F(StoreAttributes, RemoveAttributeMakesItMissing) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x", 4);
        ASSERT_TRUE(qb.removeAttribute(kMEPType));
        short value = 9;
        EXPECT_FALSE(qb.getShort(kMEPType, value));
        ASSERT_TRUE(qb.saveRec());
    });
    EXPECT_EQ(Sql(m_path, "SELECT MEPType IS NULL FROM AAA"), "1");
}

TEST_F(StoreAttributes, RemoveAttributeOfAMissingOneIsTrue) {
    Change([](CQbase& qb) {
        Add(qb, "AAA", L"x");
        EXPECT_TRUE(qb.removeAttribute(kName));
        EXPECT_TRUE(qb.saveRec());
    });
}

TEST_F(StoreAttributes, WithoutACurrentRecordThereAreNoAttributes) {
    Change([](CQbase& qb) {
        short value = 9;
        CWsz id(L"before");
        EXPECT_FALSE(qb.getShort(kMEPType, value));
        EXPECT_EQ(ErrorOf(qb), QbaseError::WrongState);
        EXPECT_FALSE(qb.setShort(kMEPType, 1));
        EXPECT_FALSE(qb.getObjId(id));
        EXPECT_EQ(id.str(), L"before");
        EXPECT_FALSE(qb.removeAttribute(kMEPType));
        Add(qb, "AAA", L"x");
        ASSERT_TRUE(qb.deleteRec("AAA", L"x"));
        EXPECT_FALSE(qb.getObjId(id));
        EXPECT_FALSE(qb.setShort(kMEPType, 1));
    });
}

} // namespace
} // namespace qbasetest
