#include "Tolm/Snapshot.h"

#include "Tools/PulledTree.h"

#include <cstring>

using namespace tolmtest;
using tolmcli::AreAlike;
using tolmcli::Nearness;
using tolmcli::Setting;
using tolmcli::StoredValue;

namespace {

constexpr short kMinSize = 1300;
constexpr short kRoughness = 1400;
constexpr short kDescription = 1501;
constexpr short kFittings = 1611;
constexpr short kPipeSizes = 1614;

StoredValue Real(double number) {
    StoredValue value;
    value.reals = {number};
    return value;
}

StoredValue Text(const std::wstring& text) {
    StoredValue value;
    value.texts = {text};
    return value;
}

/// A list of one entry: `head` and then floats.
StoredValue Packed(const std::string& head, const std::vector<float>& floats) {
    StoredValue value;
    value.bytes.assign(head.begin(), head.end());
    for (const float number : floats) {
        const auto position = value.bytes.size();
        value.bytes.resize(position + sizeof(number));
        std::memcpy(value.bytes.data() + position, &number, sizeof(number));
    }
    return value;
}

Setting With(short attribute, const StoredValue& value) {
    Setting setting;
    setting.values.emplace(attribute, value);
    return setting;
}

} // namespace

TEST(Snapshot, NumbersAreAlikeAsFarAsTheyTravel) {
    struct Case {
        short attribute;
        double one;
        double sent;
        double other;
    };
    for (const Case& c : {Case{kMinSize, 32.6, 32.599, 32.59}, Case{kRoughness, 0.04567, 0.0456, 0.0454}}) {
        const Setting one = With(c.attribute, Real(c.one));
        EXPECT_TRUE(AreAlike(one, With(c.attribute, Real(c.sent)), Nearness::AsSent)) << c.attribute;
        EXPECT_FALSE(AreAlike(one, With(c.attribute, Real(c.sent)), Nearness::Exact)) << c.attribute;
        EXPECT_FALSE(AreAlike(one, With(c.attribute, Real(c.other)), Nearness::AsSent)) << c.attribute;
    }
}

TEST(Snapshot, PackedListsAreAlikeAsFarAsTheirNumbersTravel) {
    const std::string head(98, 'x');
    struct Case {
        short attribute;
        StoredValue one;
        StoredValue sent;
        StoredValue other;
    };
    for (const Case& c : {Case{kPipeSizes, Packed("", {25, 33.7F, 27.3F, 3.2F}),
                               Packed("", {25, 33.699F, 27.299F, 3.2F}), Packed("", {25, 33.7F, 27.3F, 3.25F})},
                          Case{kFittings, Packed(head, {15, 32.6F}), Packed(head, {15, 32.599F}),
                               Packed(std::string(98, 'y'), {15, 32.6F})}}) {
        const Setting one = With(c.attribute, c.one);
        EXPECT_TRUE(AreAlike(one, With(c.attribute, c.sent), Nearness::AsSent)) << c.attribute;
        EXPECT_FALSE(AreAlike(one, With(c.attribute, c.sent), Nearness::Exact)) << c.attribute;
        EXPECT_FALSE(AreAlike(one, With(c.attribute, c.other), Nearness::AsSent)) << c.attribute;
    }
    EXPECT_FALSE(
        AreAlike(With(kPipeSizes, Packed("", {1, 1, 1, 1})), With(kPipeSizes, StoredValue()), Nearness::AsSent));
}

TEST(Snapshot, AnAttributeThatIsMissingSaysTheSameAsAnEmptyOne) {
    EXPECT_TRUE(AreAlike(With(kDescription, Text(L"")), Setting(), Nearness::Exact));
    EXPECT_TRUE(AreAlike(Setting(), With(kRoughness, Real(0)), Nearness::Exact));
    EXPECT_FALSE(AreAlike(With(kDescription, Text(L"mains")), Setting(), Nearness::Exact));
}

TEST(Snapshot, TheNameCanBeLeftAside) {
    const Setting one = With(tolmcli::kNameAttribute, Text(L"Zinc"));
    const Setting other = With(tolmcli::kNameAttribute, Text(L"Zinc(1)"));
    EXPECT_FALSE(AreAlike(one, other, Nearness::AsSent));
    EXPECT_TRUE(AreAlike(one, other, Nearness::AsSent, true));
}

TEST_F(PulledTree, ASeriesChangesWithItsFittings) {
    m_service.Apply("tower", R"({"format": "tolm-change", "formatVersion": 1, "edit": {"PipeType": [
        {"ID": "p1", "name": "Threaded steel", "CreateTime": 1, "connective": 1, "minSize": 15.0, "maxSize": 80.0,
         "preferredConnect": 0, "PipeSegmentId": "s1", "parentID": "g1",
         "Elbow": [{"id": "c1", "version": 1, "categoryCode": "threaded", "FittingPartType": 1, "min": 15.0,
                    "max": 80.0, "publicComponentId": "7"}]}]}})");
    const auto json = On("sync", {"--json"}).Json();
    ASSERT_EQ(json.at("came").size(), 1U) << json.dump(2);
    EXPECT_EQ(json.at("came")[0].at("what"), "series");
    EXPECT_EQ(json.at("came")[0].at("name"), "Threaded steel");
    EXPECT_EQ(json.at("came")[0].at("change"), "changed");
}

TEST_F(PulledTree, ASettingThatCameWithoutAChangeIsNotTold) {
    m_service.Apply("tower", R"({"format": "tolm-change", "formatVersion": 1, "edit": {"PipeSystemType": [
        {"ID": "y1", "systemType": "Cold water", "code": "J", "description": "mains", "systemCategory": 21,
         "CreateTime": 1, "fittingIds": ["p1"]}]}})");
    const auto json = On("sync", {"--json"}).Json();
    ASSERT_EQ(json.at("came").size(), 1U) << json.dump(2);
    EXPECT_EQ(json.at("came")[0].at("what"), "system type");
}

TEST_F(PulledTree, ADuctTableComesWithItsMaterialAsOne) {
    m_service.Apply("tower", R"({"format": "tolm-change", "formatVersion": 1, "add": {"ConfigTree": [
        {"ID": "d1", "text": "Spiral", "groupName": "ductSeriesType", "parentID": "", "CreateTime": 1,
         "content": {"pressureGrade": 1, "ductShape": 1, "material": "Zinc",
                     "sizeList": [{"Size": 200.0, "Thickness": 0.5}]}}]}})");
    const auto json = On("sync", {"--json"}).Json();
    ASSERT_EQ(json.at("came").size(), 1U) << json.dump(2);
    EXPECT_EQ(json.at("came")[0].at("name"), "Spiral");
}
