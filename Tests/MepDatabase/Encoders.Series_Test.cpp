#include "StoreSupport/UploadRecords.h"

#include "MepDatabase/Encoders.h"
#include "StoreSupport/IngestFixture.h"

#include <cmath>
#include <limits>

namespace tolmtest {
namespace {

using tolm::GetCreatedOrEditedMEPMaterialListJasonValue;
using tolm::GetFittingListJsonArray;
using web::json::value;

value SerieRow(SeriePtr serie) {
    return OnlyRow(GetCreatedOrEditedMEPMaterialListJasonValue(false, true, {Shared(std::move(serie))}));
}

std::vector<std::string> Keys(const value& object) {
    std::vector<std::string> keys;
    for (const auto& [key, unused] : object.as_object())
        keys.push_back(key);
    std::sort(keys.begin(), keys.end());
    return keys;
}

/// The keys whose value is an array.
std::vector<std::string> ArrayKeys(const value& object) {
    std::vector<std::string> keys;
    for (const auto& key : Keys(object))
        if (object.at(key).is_array())
            keys.push_back(key);
    return keys;
}

/// The keys of the arrays that are not empty.
std::vector<std::string> FilledKeys(const value& object) {
    std::vector<std::string> keys;
    for (const auto& key : ArrayKeys(object))
        if (object.at(key).size() != 0)
            keys.push_back(key);
    return keys;
}

std::vector<std::string> Sorted(std::vector<std::string> keys) {
    std::sort(keys.begin(), keys.end());
    return keys;
}

// --- what every object type has
// ---------------------------------------------------------------------------------------

TEST(SerieRow, OfAnotherObjectTypeHasThreeKeys) {
    for (const int type : {0, 5, 6, 7}) {
        auto serie = Serie(L"s1", L"名", Type{type});
        serie->SetCreateTime(11);
        EXPECT_EQ(SerieRow(std::move(serie)), Row("{'ID':'s1','name':'名','CreateTime':11}")) << type;
    }
}

TEST(SerieRow, OfAnotherObjectTypeStillHasItsFittings) {
    const auto row = SerieRow(FullSerie(Type::Wire, Discipline::Electrical));
    EXPECT_EQ(Keys(row), Sorted({"CreateTime", "ID", "name", "Elbow", "Tee", "Cross", "Transition", "Union", "Cap"}));
}

TEST(SerieRow, WritesItsTimeAsAWholeNumber) {
    auto serie = Serie(L"s1");
    serie->SetCreateTime(std::numeric_limits<std::int64_t>::max());
    const auto row = SerieRow(std::move(serie));
    EXPECT_TRUE(row.at("CreateTime").is_integer());
    EXPECT_EQ(row.at("CreateTime").serialize(), "9223372036854775807");
}

// --- pipes and ducts
// --------------------------------------------------------------------------------------------------

TEST(SerieRow, OfAPipeWithoutPartsHasMinusOneAndEmptyTexts) {
    auto serie = Serie(L"s1", L"n");
    serie->SetMinSize(15.0625);
    serie->SetMaxSize(300.0);
    EXPECT_EQ(SerieRow(std::move(serie)),
              Row("{'ID':'s1','name':'n','CreateTime':0,'connective':-1,'minSize':15.0625,'maxSize':300.0,"
                  "'preferredConnect':0,'PipeSegmentId':'','parentID':'','Cross':[],'Union':[],'Elbow':[],'Tee':[],"
                  "'Transition':[],'Cap':[]}"));
}

TEST(SerieRow, OfAPipeOrDuctTellsItsConnectionSizeTableAndGroup) {
    for (const auto type : {Type::Pipe, Type::Duct}) {
        const auto row = SerieRow(FullSerie(type, Discipline::HVAC));
        EXPECT_EQ(row.at("connective").serialize(), "4");
        EXPECT_EQ(row.at("preferredConnect").serialize(), "1");
        EXPECT_EQ(row.at("PipeSegmentId"), value::string("psi-1"));
        EXPECT_EQ(row.at("parentID"), value::string("msg-1"));
        EXPECT_TRUE(row.at("minSize").is_double());
        EXPECT_EQ(row.at("minSize").as_double(), 15.0625);
        EXPECT_TRUE(row.at("maxSize").is_double());
        EXPECT_EQ(row.at("maxSize").as_double(), 300.0);
    }
}

TEST(SerieRow, DoesNotRoundItsBounds) {
    auto serie = Serie(L"s1");
    serie->SetMinSize(0.1234567890123);
    serie->SetMaxSize(1e300);
    const auto row = SerieRow(std::move(serie));
    EXPECT_EQ(row.at("minSize").as_double(), 0.1234567890123);
    EXPECT_EQ(row.at("maxSize").as_double(), 1e300);
}

TEST(SerieRow, SendsNoBoundThatIsNotFinite) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    auto serie = Serie(L"s1");
    serie->SetMinSize(-infinity);
    serie->SetMaxSize(std::nan(""));
    const auto row = SerieRow(std::move(serie));
    EXPECT_EQ(row.at("minSize").as_double(), std::numeric_limits<double>::lowest());
    EXPECT_EQ(row.at("maxSize").as_double(), 0.0);
}

TEST(SerieRow, TakesAPartWithoutIdForNone) {
    auto serie = Serie(L"s1");
    auto size = SizeModule(L"", L"n");
    serie->SetSizeModule(size);
    serie->SetSerieGroup(Group(L"", L"n"));
    const auto row = SerieRow(std::move(serie));
    EXPECT_EQ(row.at("PipeSegmentId"), value::string(""));
    EXPECT_EQ(row.at("parentID"), value::string(""));
}

// --- trays and conduits
// -----------------------------------------------------------------------------------------------

TEST(SerieRow, OfATrayTellsItsShapeAlone) {
    auto serie = Serie(L"s1", L"n", Type::CableTray, Discipline::Electrical);
    serie->SetSerieGroup(Group(L"g1", L"n"));
    EXPECT_EQ(SerieRow(std::move(serie)).at("type").serialize(), "-1");
    const auto row = SerieRow(FullSerie(Type::CableTray, Discipline::Electrical));
    EXPECT_EQ(row.at("type").serialize(), "2");
    for (const char* key : {"parentID", "connective", "minSize", "maxSize", "preferredConnect", "PipeSegmentId"})
        EXPECT_FALSE(row.has_field(key)) << key;
}

TEST(SerieRow, OfAConduitHasItsSizeTableAsParent) {
    const auto row = SerieRow(FullSerie(Type::Conduit, Discipline::Electrical));
    EXPECT_EQ(row.at("parentID"), value::string("psi-1"));
    for (const char* key : {"type", "connective", "minSize", "maxSize", "preferredConnect", "PipeSegmentId"})
        EXPECT_FALSE(row.has_field(key)) << key;
    EXPECT_EQ(SerieRow(Serie(L"s1", L"n", Type::Conduit)).at("parentID"), value::string(""));
    auto serie = Serie(L"s1", L"n", Type::Conduit);
    auto size = SizeModule(L"", L"n");
    serie->SetSizeModule(size);
    EXPECT_EQ(SerieRow(std::move(serie)).at("parentID"), value::string(""));
}

struct ArraysCase {
    Type type;
    std::vector<std::string> keys;
};

TEST(SerieRow, HasTheArraysOfItsObjectTypeAlsoWhenEmpty) {
    const ArraysCase cases[] = {
        {Type::Pipe, {"Cross", "Union", "Elbow", "Tee", "Transition", "Cap"}},
        {Type::Duct, {"Duct", "Round", "Cross", "Union", "Elbow", "Tee", "Transition", "Cap"}},
        {Type::CableTray,
         {"HorizontalBend", "HorizontalTee", "Cross", "Transition", "Union", "VerticalInsideBend",
          "VerticalOutsideBend", "VerticalLateralTee", "VerticalLateralElbow", "VerticalLeftLateralElbow",
          "VerticalRightLateralElbow", "VerticalDownwardTee", "VerticalUpTee", "VerticalTee"}},
        {Type::Conduit, {"Conduit", "Bend", "Tee", "Cross", "Transition", "Union"}},
    };
    for (const auto& [type, keys] : cases) {
        const auto row = SerieRow(Serie(L"s1", L"n", type));
        EXPECT_EQ(ArrayKeys(row), Sorted(keys));
        EXPECT_EQ(FilledKeys(row), std::vector<std::string>());
    }
}

// --- the key of a fitting
// ---------------------------------------------------------------------------------------------

struct KeyCase {
    int part;
    const char* pipe;
    const char* duct;
    const char* tray;
    const char* conduit;
    const char* other;
};

constexpr KeyCase kKeyCases[] = {
    {1, "Elbow", "Elbow", "HorizontalBend", "Bend", "Elbow"},
    {2, "Tee", "Tee", "HorizontalTee", "Tee", "Tee"},
    {3, "Cross", "Cross", "Cross", "Cross", "Cross"},
    {4, "Transition", "Transition", "Transition", "Transition", "Transition"},
    {5, "Union", "Union", "Union", "Union", "Union"},
    {6, "Cap", "Cap", "Cap", "Cap", "Cap"},
    {11, nullptr, "Round", nullptr, nullptr, nullptr},
    {21, nullptr, nullptr, "VerticalInsideBend", nullptr, nullptr},
    {22, nullptr, nullptr, "VerticalOutsideBend", nullptr, nullptr},
    {23, nullptr, nullptr, "VerticalLateralTee", nullptr, nullptr},
    {24, nullptr, nullptr, "VerticalLateralElbow", nullptr, nullptr},
    {26, nullptr, nullptr, "VerticalLeftLateralElbow", nullptr, nullptr},
    {27, nullptr, nullptr, "VerticalRightLateralElbow", nullptr, nullptr},
    {28, nullptr, nullptr, "VerticalDownwardTee", nullptr, nullptr},
    {29, nullptr, nullptr, "VerticalUpTee", nullptr, nullptr},
};

std::vector<std::string> KeysOfPart(int part, Type type) {
    auto serie = Serie(L"s1", L"n", type);
    auto connection = Connection(L"c1", L"n", Connector::PipeThreaded, type);
    const CatalogueEntry entry;
    AddComponent(*connection, part, &entry);
    serie->SetConnectionSerie(connection);
    return FilledKeys(SerieRow(std::move(serie)));
}

std::vector<std::string> OneOrNone(const char* key) {
    return key != nullptr ? std::vector<std::string>{key} : std::vector<std::string>();
}

TEST(FittingKey, IsByPartTypeAndObjectType) {
    for (const auto& row : kKeyCases) {
        EXPECT_EQ(KeysOfPart(row.part, Type::Pipe), OneOrNone(row.pipe)) << row.part;
        EXPECT_EQ(KeysOfPart(row.part, Type::Duct), OneOrNone(row.duct)) << row.part;
        EXPECT_EQ(KeysOfPart(row.part, Type::CableTray), OneOrNone(row.tray)) << row.part;
        EXPECT_EQ(KeysOfPart(row.part, Type::Conduit), OneOrNone(row.conduit)) << row.part;
        EXPECT_EQ(KeysOfPart(row.part, Type::Wire), OneOrNone(row.other)) << row.part;
    }
}

TEST(FittingKey, IsMissingForAnyOtherPartType) {
    for (const int part : {-1, 0, 7, 10, 12, 20, 25, 30, 1000})
        for (const auto type : {Type::Pipe, Type::Duct, Type::CableTray, Type::Conduit, Type::Wire})
            EXPECT_EQ(KeysOfPart(part, type), std::vector<std::string>()) << part;
}

TEST(FittingKey, OfACapComesToATraySeriesThatHasNoSuchArray) {
    EXPECT_FALSE(SerieRow(Serie(L"s1", L"n", Type::CableTray)).has_field("Cap"));
    EXPECT_TRUE(SerieRow(FullSerie(Type::CableTray, Discipline::Electrical)).has_field("Cap"));
}

TEST(FittingKey, GathersTheFittingsOfAPartTypeInTheirOrder) {
    auto serie = Serie(L"s1", L"n");
    auto connection = Connection(L"c1");
    for (const auto& [part, id] : {std::pair{2, L"t1"}, {1, L"e2"}, {2, L"t0"}, {1, L"e1"}}) {
        const CatalogueEntry entry{id};
        AddComponent(*connection, part, &entry);
    }
    serie->SetConnectionSerie(connection);
    const auto row = SerieRow(std::move(serie));
    const auto ids = [&row](const char* key) {
        std::vector<std::string> texts;
        for (const auto& fitting : row.at(key).as_array())
            texts.push_back(fitting.at("id").as_string());
        return texts;
    };
    EXPECT_EQ(ids("Elbow"), (std::vector<std::string>{"e2", "e1"}));
    EXPECT_EQ(ids("Tee"), (std::vector<std::string>{"t1", "t0"}));
}

// --- fittings
// ---------------------------------------------------------------------------------------------------------

TEST(FittingArray, TellsComponentPartTypeAndBounds) {
    auto connection = Connection(L"c1");
    const CatalogueEntry entry{L"弯头-1", L"30.10.20", 3, 9'223'372'036'854'775'807};
    AddComponent(*connection, 11, &entry, 0.1234567890123, 300.0);
    const auto fittings = GetFittingListJsonArray(connection->GetProducts());
    EXPECT_EQ(fittings, Row("[{'id':'弯头-1','version':3,'categoryCode':'30.10.20','FittingPartType':11,"
                            "'min':0.1234567890123,'max':300.0,'publicComponentId':'9223372036854775807'}]"));
    EXPECT_TRUE(fittings.at(0).at("max").is_double());
}

TEST(FittingArray, WritesANegativePublicIdAsDecimalText) {
    auto connection = Connection(L"c1");
    const CatalogueEntry entry{L"e", L"c", 1, std::numeric_limits<std::int64_t>::min()};
    AddComponent(*connection, 1, &entry);
    EXPECT_EQ(GetFittingListJsonArray(connection->GetProducts()).at(0).at("publicComponentId"),
              value::string("-9223372036854775808"));
}

TEST(FittingArray, SendsNoBoundThatIsNotFinite) {
    auto connection = Connection(L"c1");
    const CatalogueEntry entry;
    AddComponent(*connection, 1, &entry, std::nan(""), std::numeric_limits<double>::infinity());
    const auto fitting = GetFittingListJsonArray(connection->GetProducts()).at(0);
    EXPECT_EQ(fitting.at("min").as_double(), 0.0);
    EXPECT_EQ(fitting.at("max").as_double(), std::numeric_limits<double>::max());
}

TEST(FittingArray, OfNoFittingsIsEmpty) {
    EXPECT_EQ(GetFittingListJsonArray({}), value::array());
}

TEST(FittingArray, EndsInANullForEachFittingWithoutComponent) {
    auto connection = Connection(L"c1");
    const CatalogueEntry first{L"e1"};
    const CatalogueEntry second{L"e2"};
    for (const auto* entry :
         {static_cast<const CatalogueEntry*>(nullptr), &first, static_cast<const CatalogueEntry*>(nullptr), &second})
        AddComponent(*connection, 1, entry);
    const auto fittings = GetFittingListJsonArray(connection->GetProducts());
    const std::wstring warning = L"GetFittingListJsonArray: fittingProductInfo.m_pComponent为空";
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{warning, warning}));
    ASSERT_EQ(fittings.size(), 4U);
    EXPECT_EQ(fittings.at(0).at("id"), value::string("e1"));
    EXPECT_EQ(fittings.at(1).at("id"), value::string("e2"));
    EXPECT_TRUE(fittings.at(2).is_null());
    EXPECT_TRUE(fittings.at(3).is_null());
}

TEST(FittingArray, IsNotMadeForPartTypesThatAreNotSent) {
    auto serie = Serie(L"s1", L"n");
    auto connection = Connection(L"c1");
    AddComponent(*connection, 11, nullptr);
    serie->SetConnectionSerie(connection);
    EXPECT_EQ(FilledKeys(SerieRow(std::move(serie))), std::vector<std::string>());
}

// --- lists
// ------------------------------------------------------------------------------------------------------------

TEST(SerieRows, StandInTheOrderOfTheList) {
    const auto encoded =
        GetCreatedOrEditedMEPMaterialListJasonValue(false, false, {Shared(Serie(L"b")), Shared(Serie(L"a"))});
    EXPECT_EQ(RowIds(encoded.at("rows")), (std::vector<std::string>{"b", "a"}));
    EXPECT_EQ(GetCreatedOrEditedMEPMaterialListJasonValue(false, true, {}), Row("{'rows':[]}"));
}

TEST(SerieRows, AreWrappedOnlyWhenWrappingIsAskedForAndNothingWasCreated) {
    const auto serie = Shared(FullSerie(Type::Pipe, Discipline::Plumbing));
    const auto row = [&](bool wrap, bool created) {
        return OnlyRow(GetCreatedOrEditedMEPMaterialListJasonValue(wrap, created, {serie}));
    };
    auto wrapped = value::object();
    wrapped["id"] = value::string("sms-1");
    wrapped["data"] = row(false, false);
    EXPECT_EQ(row(true, false), wrapped);
    EXPECT_EQ(row(true, true), row(false, false));
    EXPECT_EQ(row(false, true), row(false, false));
}

TEST(SerieRows, AreLostWithANullRecord) {
    EXPECT_TRUE(GetCreatedOrEditedMEPMaterialListJasonValue(false, true, {Shared(Serie(L"a")), nullptr}).is_null());
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"GetCreatedOrEditedMEPMaterialListJasonValue: pSerie为空"}));
}

} // namespace
} // namespace tolmtest
