#include "StoreFixture.h"

#include "Qbase/DefinitionInternal.h"
#include "Support/DebugWarnings.h"

#include <thread>

namespace qbasetest {
namespace {

using qbase::AttributeType;
using qbase::Definition;

std::shared_ptr<const Definition> Parse(const std::string& text) {
    std::string error;
    auto definition = Definition::Parse(text, error);
    EXPECT_EQ(definition == nullptr, !error.empty());
    return definition;
}

std::string FaultOf(const std::string& text) {
    std::string error;
    EXPECT_EQ(Definition::Parse(text, error), nullptr) << text;
    return error;
}

TEST(Definition, ClassesAndAttributesStandInTheOrderOfTheFile) {
    const auto definition = Parse(kDefinition);
    ASSERT_NE(definition, nullptr);
    ASSERT_EQ(definition->Classes().size(), 3u);
    EXPECT_EQ(definition->Classes()[2].code, "000");
    const auto& attributes = definition->Classes()[0].attributes;
    EXPECT_EQ(attributes[0].name, "MEPType");
    EXPECT_EQ(attributes[0].id, 1104);
    EXPECT_EQ(attributes[9].type, AttributeType::FloatArray);
    EXPECT_EQ(attributes[10].type, AttributeType::Binary);
    EXPECT_EQ(attributes[10].entrySize, 12);
    EXPECT_EQ(attributes[11].type, AttributeType::BinaryArray);
    EXPECT_EQ(attributes[11].entrySize, 16);
    EXPECT_EQ(definition->Classes()[0].indexes, (std::vector<std::vector<int>>{{7}, {0, 1}}));
}

TEST(Definition, OneIdMayBearTwoNames) {
    const auto definition = Parse(kDefinition);
    EXPECT_EQ(definition->Classes()[0].attributes[6].name, "Name");
    EXPECT_EQ(definition->Classes()[1].attributes[1].name, "Title");
    EXPECT_EQ(definition->Classes()[1].Find(1601), 1);
    EXPECT_EQ(definition->Classes()[1].Find(1400), -1);
    EXPECT_EQ(definition->Find("CCC"), -1);
    EXPECT_EQ(definition->FindAttribute(9), nullptr);
}

TEST(Definition, CommentsSpacesAndLineEndsDoNotMatter) {
    const auto definition =
        Parse("# first\r\n\r\nstore-definition\t1 # here\r\n  class  A # letters\r\n\t7   short \t X\r\nindex X");
    ASSERT_NE(definition, nullptr);
    EXPECT_EQ(definition->Classes()[0].attributes[0].name, "X");
    EXPECT_EQ(definition->Classes()[0].indexes.size(), 1u);
}

TEST(Definition, AFaultIsToldWithItsLine) {
    const std::string head = "store-definition 1\n";
    EXPECT_EQ(FaultOf(""), "line 0: there is no class");
    EXPECT_EQ(FaultOf(head), "line 1: there is no class");
    EXPECT_EQ(FaultOf("class A"), "line 1: this is no definition of a store");
    EXPECT_EQ(FaultOf("store-definition 2\nclass A"), "line 1: '2' is no number from 1 to 1");
    EXPECT_EQ(FaultOf(head + "class"), "line 2: a class has one code");
    EXPECT_EQ(FaultOf(head + "class A B"), "line 2: a class has one code");
    EXPECT_EQ(FaultOf(head + "class A\nclass a"), "line 3: class 'a' cannot stand here");
    EXPECT_EQ(FaultOf(head + "class sqlite_x"), "line 2: class 'sqlite_x' cannot stand here");
    EXPECT_EQ(FaultOf(head + "class A\"B"), "line 2: 'A\"B' is no name");
    EXPECT_EQ(FaultOf(head + "1 short X"), "line 2: no class has begun");
    EXPECT_EQ(FaultOf(head + "class A\n1 short"), "line 3: an attribute has a number, a type and a name");
    EXPECT_EQ(FaultOf(head + "class A\n1 short X Y"), "line 3: an attribute has a number, a type and a name");
    EXPECT_EQ(FaultOf(head + "class A\nx short X"), "line 3: 'x' is no number from 1 to 32767");
    EXPECT_EQ(FaultOf(head + "class A\n0 short X"), "line 3: '0' is no number from 1 to 32767");
    EXPECT_EQ(FaultOf(head + "class A\n40000 short X"), "line 3: '40000' is no number from 1 to 32767");
    EXPECT_EQ(FaultOf(head + "class A\n1 shorts X"), "line 3: 'shorts' is no type");
    EXPECT_EQ(FaultOf(head + "class A\n1 binary X"), "line 3: 'binary' is no type");
    EXPECT_EQ(FaultOf(head + "class A\n1 binary(0) X"), "line 3: '0' is no number from 1 to 1048576");
    EXPECT_EQ(FaultOf(head + "class A\n1 binary(x)[] X"), "line 3: 'x' is no number from 1 to 1048576");
    EXPECT_EQ(FaultOf(head + "class A\n1 binary(4 X"), "line 3: 'binary(4' is no type");
    EXPECT_EQ(FaultOf(head + "class A\n1 short 1X"), "line 3: '1X' is no name");
    EXPECT_EQ(FaultOf(head + "class A\n1 short X-Y"), "line 3: 'X-Y' is no name");
    EXPECT_EQ(FaultOf(head + "class A\n1 short " + std::string(61, 'X')),
              "line 3: '" + std::string(61, 'X') + "' is no name");
    EXPECT_EQ(FaultOf(head + "class A\n1 short X\n2 short x"), "line 4: attribute 'x' stands twice");
    EXPECT_EQ(FaultOf(head + "class A\n1 short X\n1 short Y"), "line 4: attribute 'Y' stands twice");
    EXPECT_EQ(FaultOf(head + "class A\n1 short Id"), "line 3: attribute 'Id' stands twice");
    EXPECT_EQ(FaultOf(head + "class A\n1 short X\nclass B\n1 long X"),
              "line 5: attribute 1 has another type in another class");
    EXPECT_EQ(FaultOf(head + "class A\n1 binary(4) X\nclass B\n1 binary(5) X"),
              "line 5: attribute 1 has another type in another class");
    EXPECT_EQ(FaultOf(head + "class A\nindex X"), "line 3: index over 'X', which is no attribute of the class");
    EXPECT_EQ(FaultOf(head + "class A\nindex"), "line 3: an index names its attributes");
}

using DefinitionFile = StoreTest;

TEST_F(DefinitionFile, IsReadOnceWhileItDoesNotChange) {
    const auto first = Definition::Load(m_definition);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(Definition::Load(m_definition), first);
    WriteText(m_definition, std::string(kDefinition) + "# longer\n");
    const auto second = Definition::Load(m_definition);
    EXPECT_NE(second, first);
    EXPECT_EQ(second->Classes().size(), first->Classes().size());
}

TEST_F(DefinitionFile, AFaultGoesToTheLog) {
    WriteText(m_definition, "store-definition 1\nclass A\n1 nonsense X\n");
    EXPECT_EQ(Definition::Load(m_definition), nullptr);
    const auto lines = tolmtest::TakeLogLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], L"definition file " + m_definition + L": line 3: 'nonsense' is no type");
}

TEST_F(DefinitionFile, AFaultIsNoLongerOneWhenItIsMended) {
    WriteText(m_definition, "");
    EXPECT_EQ(Definition::Load(m_definition), nullptr);
    WriteText(m_definition, kDefinition);
    EXPECT_NE(Definition::Load(m_definition), nullptr);
}

TEST_F(DefinitionFile, WhatIsNoFileGivesNone) {
    EXPECT_EQ(Definition::Load(m_folder.Path()), nullptr);
    EXPECT_EQ(Definition::Load(m_folder.File(L"none")), nullptr);
}

TEST_F(DefinitionFile, AStoreThatIsOpenKeepsItsDefinition) {
    CQbase qb;
    ASSERT_TRUE(Open(qb) && qb.lockForUpdate());
    WriteText(m_definition, "store-definition 1\nclass ZZZ\n1 short X\n");
    Add(qb, "AAA", L"x");
    EXPECT_TRUE(qb.closeDatabase());
}

TEST_F(DefinitionFile, ManyThreadsMayReadIt) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round)
                EXPECT_NE(Definition::Load(m_definition), nullptr);
        });
    }
    for (auto& thread : threads)
        thread.join();
}

} // namespace
} // namespace qbasetest
