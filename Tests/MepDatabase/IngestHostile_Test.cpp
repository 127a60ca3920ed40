#include "MepDatabase/ConfigTreeIngest.h"
#include "MepDatabase/StoreSchema.h"
#include "StoreSupport/IngestFixture.h"
#include "StoreSupport/RefreshFixture.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

namespace tolmtest {
namespace {

using web::json::value;

/// What a row may hold in place of what it should.
std::vector<value> HostileValues() {
    std::vector<value> values = {
        Json("null"),  Json("true"),  Json("-1"),      Json("1e308"),       Json("18446744073709551615"),
        Json("[]"),    Json("{}"),    Json("[null]"),  Json("[[[[]]]]"),    Json(R"({"ID":"x"})"),
        Json("\"\""),  Json("\"x\""), Json("-1e-308"), Json(R"("\u0000")"), Json(R"("\ud83d\ude00")"),
        Json("\"1e\"")};
    values.push_back(value::string(std::string(100000, 'x')));
    values.push_back(value::string("\xC3\x28\xFF"));
    values.push_back(value::array(std::vector<value>(301, value::object())));
    values.push_back(value::array(std::vector<value>(301, value::string("s"))));
    return values;
}

namespace schema = tolm::schema;

/// The attributes that a member of a row goes to. What stands within a member goes where that goes.
const std::map<std::string, std::set<short>> kAttributesOf{
    {"text", {schema::kName, schema::kCableSpecTypeName}},
    {"name", {schema::kName}},
    {"systemType", {schema::kName}},
    {"CreateTime", {schema::kCreateTime}},
    {"parentID", {schema::kMaterialId, schema::kSerieGroupId, schema::kSizeModuleId}},
    {"content",
     {schema::kRoughness, schema::kPipeSizeList, schema::kDuctSizeList, schema::kCableTraySizeList,
      schema::kCableSpecificationList}},
    {"sizeList",
     {schema::kPipeSizeList, schema::kDuctSizeList, schema::kCableTraySizeList, schema::kCableSpecificationList}},
    {"roughness", {schema::kRoughness}},
    {"shape", {schema::kDuctShape}},
    {"systemPress", {schema::kPressureGrade}},
    {"series", {schema::kCableMaterial, schema::kName}},
    {"currentUseTemperature", {schema::kCableEnvironmentTemperature}},
    {"type", {schema::kCableTrayShape}},
    {"minSize", {schema::kMinSize}},
    {"maxSize", {schema::kMaxSize}},
    {"preferredConnect", {schema::kJunctionType}},
    {"PipeSegmentId", {schema::kSizeModuleId}},
    {"connective", {schema::kConnectionType}},
    {"Elbow", {schema::kFittingList}},
    {"HorizontalTee", {schema::kFittingList}},
    {"code", {schema::kCode}},
    {"description", {schema::kDescription}},
    {"systemCategory", {schema::kSystemClassification}},
    {"fittingIds", {schema::kMaterialSerieIds}},
    {"bindIDs", {schema::kCableSpecTypeIds}},
    {"SystemClassification", {schema::kSystemClassification}},
    {"SystemTypeId", {schema::kSystemTypeId}},
    {"SwitchComponentId1", {schema::kSwitchComponentId1}},
    {"SwitchComponentId2", {schema::kSwitchComponentId2}},
    {"SwitchComponentId3", {schema::kSwitchComponentId3}},
    {"SwitchComponentType1", {schema::kSwitchComponentType1}},
    {"SwitchComponentType2", {schema::kSwitchComponentType2}},
    {"SwitchComponentType3", {schema::kSwitchComponentType3}},
    {"Phase", {schema::kPhase}},
    {"ProtectionMaterial", {schema::kProtectionMaterial}},
    {"WireType", {schema::kWireTypeId}},
    {"WireSpec", {schema::kWireSpec}},
    {"WireCountStr", {schema::kWireCountStr}},
    {"ConduitType", {schema::kConduitTypeId}},
    {"ConduitSizeDN", {schema::kConduitSizeDN}},
    {"IsApply", {schema::kIsApply}},
    {"LayingMode", {schema::kLayingMode}},
};

/// What is stored by itself, by class and object type: what stands here is stored in this order, behind all that stands
/// nowhere here. A unit that fails keeps what it had stored until then.
using Steps = std::vector<std::set<short>>;
const std::map<std::pair<std::string, std::string>, Steps> kSteps{
    {{"PSI", "1"}, {{schema::kRoughness, schema::kPipeSizeList}}},
    {{"PSI", "2"}, {{schema::kDuctShape, schema::kPressureGrade}, {schema::kDuctSizeList}, {schema::kMaterialId}}},
    {{"SMS", "1"}, {{schema::kSerieGroupId}, {schema::kConnectionSerieId}}},
    {{"SMS", "3"}, {{schema::kConnectionSerieId}}},
    {{"SMS", "4"}, {{schema::kSizeModuleId}, {schema::kConnectionSerieId}}},
};

/// What a record holds, by attribute.
using Record = std::map<short, std::string>;
/// Records by class and id.
using Key = std::pair<std::string, std::string>;
using Content = std::map<Key, Record>;

/// One way to spoil a row: `row` has something else in place of `member`, or lacks it.
struct SpoiltRow {
    const value& row;
    std::string member; ///< the innermost that goes to an attribute; empty where none does, as with the row's id
    bool isWhole;       ///< nothing of the row is left
};
using Use = std::function<void(const SpoiltRow&)>;

/// Calls `use` with the row once for each member at any depth and each hostile value in its place, and once without
/// the member.
void SpoilWithin(value& root, value& at, const std::string& member, const std::vector<value>& hostile, const Use& use) {
    std::vector<std::string> keys;
    if (at.is_object())
        for (const auto& [key, each] : at.as_object())
            keys.push_back(key);
    for (const std::string& key : keys) {
        const std::string& goesTo = kAttributesOf.contains(key) ? key : member;
        const value kept = at.at(key);
        for (const value& other : hostile) {
            at[key] = other;
            use({root, goesTo, false});
        }
        at.erase(key);
        use({root, goesTo, false});
        at[key] = kept;
        SpoilWithin(root, at[key], goesTo, hostile, use);
    }
    if (at.is_array())
        for (std::size_t i = 0; i < at.size(); ++i)
            SpoilWithin(root, at[i], member, hostile, use);
}

/// The same, and once with each hostile value in place of the row.
void Spoil(const value& row, const Use& use) {
    const std::vector<value> hostile = HostileValues();
    value root = row;
    SpoilWithin(root, root, "", hostile, use);
    for (const value& other : hostile)
        use({other, "", true});
}

/// The row as it was before a change of everything in it but ids, categories and empty texts.
value Older(const value& row, const std::string& key = "") {
    value older = row;
    if (row.is_object())
        for (const auto& [name, each] : row.as_object())
            older[name] = Older(each, name);
    else if (row.is_array())
        for (std::size_t i = 0; i < row.size(); ++i)
            older[i] = Older(row.at(i), key);
    else if (row.is_integer())
        older = value::number(row.as_integer() + 1);
    else if (row.is_double())
        older = value::number(row.as_double() + 1);
    else if (row.is_string() && row.as_string() != "" && key != "ID" && key != "categoryCode")
        older = value::string(row.as_string() + "0");
    return older;
}

std::string TextOf(const wstring& text) {
    return vorn::StringUtil::ToString(text);
}

/// An attribute of the current record as text; none where the record lacks it.
std::optional<std::string> AttributeText(CQbase& qb, const schema::AttributeRow& row) {
    short number = 0;
    float narrow = 0;
    double wide = 0;
    CWsz text;
    CWszArray texts;
    CFloatArray floats;
    CByteBuffer bytes;
    int count = 0;
    std::string list;
    if (row.type == "short")
        return qb.getShort(row.id, number) ? std::optional(std::to_string(number)) : std::nullopt;
    if (row.type == "float")
        return qb.getFloat(row.id, narrow) ? std::optional(std::to_string(narrow)) : std::nullopt;
    if (row.type == "double")
        return qb.getDouble(row.id, wide) ? std::optional(std::to_string(wide)) : std::nullopt;
    if (row.type == "text")
        return qb.getWsz(row.id, text, 1) ? std::optional(TextOf(text.str())) : std::nullopt;
    if (row.type == "text[]" && qb.getWszArray(row.id, texts, 1000, -1)) {
        for (int i = 0; i < texts.length(); ++i)
            list += TextOf(texts.wszAt(i).str()) + ";";
        return list;
    }
    if (row.type == "float[]" && qb.getFloatArray(row.id, floats)) {
        for (int i = 0; i < floats.length(); ++i)
            list += std::to_string(floats.valueAt(i)) + ";";
        return list;
    }
    if (row.type.starts_with("binary") && qb.getBinaryArray(row.id, bytes, count))
        return std::string(bytes.data(), static_cast<std::size_t>(count));
    return std::nullopt;
}

std::optional<std::string> TextIn(const Record& record, short attribute) {
    const auto found = record.find(attribute);
    return found == record.end() ? std::nullopt : std::optional(found->second);
}

/// The step in which an attribute of this record is stored.
std::ptrdiff_t StepOf(const char* classCode, const Record& record, short attribute) {
    const auto steps = kSteps.find({classCode, TextIn(record, schema::kMEPType).value_or("")});
    if (steps == kSteps.end())
        return 0;
    const auto found = std::find_if(steps->second.begin(), steps->second.end(),
                                    [&](const auto& step) { return step.contains(attribute); });
    return found == steps->second.end() ? 0 : found - steps->second.begin() + 1;
}

/// How far a record got on its way from the old one, null where there was none, to the whole one.
struct Way {
    const Record* old;
    const Record& whole;
    bool mayEndOnTheWay;
    std::set<short> free; ///< attributes that may be anything
};

/// Whether the record is whole, or whole up to some step and old from there on where it may be.
bool IsOnItsWay(const char* classCode, const Way& way, const Record& now) {
    constexpr auto none = std::numeric_limits<std::ptrdiff_t>::max();
    std::ptrdiff_t lastNew = way.old == nullptr ? 0 : -1;
    std::ptrdiff_t firstOld = none;
    for (const auto& row : schema::kAttributes) {
        if (std::string_view(row.classCode) != classCode || way.free.contains(row.id))
            continue;
        const auto text = TextIn(now, row.id);
        const bool isOld = text == (way.old != nullptr ? TextIn(*way.old, row.id) : std::nullopt);
        const bool isNew = text == TextIn(way.whole, row.id);
        const auto step = StepOf(classCode, way.whole, row.id);
        if (!isOld && !isNew)
            return false;
        if (!isOld)
            lastNew = std::max(lastNew, step);
        if (!isNew)
            firstOld = std::min(firstOld, step);
    }
    return lastNew < firstOld && (way.mayEndOnTheWay || firstOld == none);
}

/// Every row is taken with each of its members spoilt, into a store without its record and into one that has an older
/// one: no record is half old and half new, and nothing is told but what the ingest tells of a lost unit.
class HostileRows : public IngestFixture {
protected:
    using Ingest = std::function<void(const value& row)>;

    void SetUp() override {
        IngestFixture::SetUp();
        ProvideCategories({"cat", "16353515", "16352020"});
    }

    /// Adds the row, spoilt in each way.
    void SpoilEach(const std::string& text, const std::set<std::wstring>& expected, const Ingest& ingest) {
        const value row = Row(text);
        for (const bool isKnown : {false, true}) {
            const auto begin = [&] {
                Empty();
                if (isKnown)
                    ingest(Older(row));
            };
            begin();
            const Content old = ContentNow();
            ingest(row);
            const Content whole = ContentNow();
            ASSERT_TRUE(TakeDebugWarnings().empty() && TakeLogLines().empty()) << text;
            ASSERT_NE(old, whole);
            Spoil(row, [&](const SpoiltRow& spoilt) {
                begin();
                ingest(spoilt.row);
                ExpectBetween(old, whole, spoilt, !TakeLogLines().empty());
            });
            ExpectInOrder(expected);
        }
    }

    /// Deletes by the row, spoilt in each way, what `fill` puts there. Each record stays as it is, or goes.
    void SpoilDeletion(const std::string& text, const std::set<std::wstring>& expected,
                       const std::function<void()>& fill, const Ingest& remove) {
        Spoil(Row(text), [&](const SpoiltRow& spoilt) {
            Empty();
            fill();
            const Content before = ContentNow();
            remove(spoilt.row);
            for (const auto& [key, record] : ContentNow())
                EXPECT_TRUE(before.contains(key) && before.at(key) == record) << spoilt.row.serialize();
        });
        Empty();
        fill();
        remove(Row(text));
        EXPECT_TRUE(ContentNow().empty()) << text;
        ExpectInOrder(expected);
    }

    void ExpectInOrder(const std::set<std::wstring>& expected) {
        for (const std::wstring& warning : TakeDebugWarnings())
            EXPECT_TRUE(expected.contains(warning)) << testing::PrintToString(warning);
        TakeLogLines();
        MakeRecord("MTS", L"still works", L"n", 1, 2);
        EXPECT_TRUE(Exists("MTS", L"still works"));
        Empty();
    }

    /// Without an attribute to go to, a member tells which record it is: another one, or none, has the rest then.
    void ExpectBetween(const Content& old, const Content& whole, const SpoiltRow& spoilt, bool failed) {
        const Content now = ContentNow();
        if (spoilt.isWhole) {
            EXPECT_EQ(now, old) << spoilt.row.serialize();
            return;
        }
        const bool namesTheRecord = spoilt.member.empty() || spoilt.member == "parentID";
        const auto spoiltAttributes = kAttributesOf.find(spoilt.member);
        const bool mayVary = spoiltAttributes != kAttributesOf.end() && (!failed || namesTheRecord);
        const std::set<short> free = mayVary ? spoiltAttributes->second : std::set<short>();
        for (const auto& [key, record] : now) {
            const Record target = WholeOf(key, whole);
            const Way way{old.contains(key) ? &old.at(key) : nullptr, target, failed || namesTheRecord, free};
            EXPECT_TRUE((whole.contains(key) || namesTheRecord) && IsOnItsWay(key.first.c_str(), way, record))
                << key.first << " " << key.second << " of " << spoilt.row.serialize().substr(0, 1000);
        }
        for (const auto& [key, record] : old)
            EXPECT_TRUE(now.contains(key)) << key.first << " of " << spoilt.row.serialize().substr(0, 1000);
        for (const auto& [key, record] : whole)
            EXPECT_TRUE(failed || namesTheRecord || now.contains(key)) << key.first;
    }

    /// The record that the row makes: under another id the same, and in another class what is common to both.
    static Record WholeOf(const Key& key, const Content& whole) {
        if (const auto found = whole.find(key); found != whole.end())
            return found->second;
        for (const auto& [other, record] : whole)
            if (other.first == key.first)
                return record;
        Record common;
        for (const auto& row : schema::kAttributes)
            if (row.classCode == key.first && whole.begin()->second.contains(row.id))
                common[row.id] = whole.begin()->second.at(row.id);
        return common;
    }

    void AddOther(const value& add) {
        if (add.is_object())
            util.AddOtherContent(add.as_object(), &qb, folder.File(L"products.db"), folder.File(L"files"));
    }
    void DeleteOther(const value& del) {
        if (del.is_object())
            util.DeleteOtherContent(del.as_object(), &qb, folder.File(L"products.db"), folder.File(L"files"));
    }

    void Empty() {
        for (const char* classCode : kClasses)
            for (const wstring& id : Ids(classCode))
                ASSERT_TRUE(qb.deleteRec(classCode, id));
    }

    /// What is made here with a record, and has no id of the cloud's, goes by that record.
    Content ContentNow() {
        Content content;
        for (const char* classCode : kClasses)
            for (const wstring& id : Ids(classCode))
                content[{classCode, TextOf(id)}] = RecordNow(classCode, id);
        Content named = content;
        for (const auto& [key, record] : content) {
            if (key.first == "SMS")
                NameByOwner(named, key, schema::kConnectionSerieId, "COS");
            if (key.first == "PSI" && record.contains(schema::kMEPType) && record.at(schema::kMEPType) == "2")
                NameByOwner(named, key, schema::kMaterialId, "MTS");
        }
        return named;
    }

    static void NameByOwner(Content& content, const Key& owner, short link, const char* classCode) {
        const auto linked = content.at(owner).find(link);
        if (linked == content.at(owner).end())
            return;
        if (auto made = content.extract({classCode, linked->second}); !made.empty()) {
            made.key().second = "of " + owner.second;
            content.insert(std::move(made));
        }
        linked->second = "its own";
    }

    Record RecordNow(const char* classCode, const wstring& id) {
        Record record;
        EXPECT_TRUE(qb.fetchEqualRec(classCode, id)) << TextOf(id);
        for (const auto& row : schema::kAttributes)
            if (std::string_view(row.classCode) == classCode)
                if (auto text = AttributeText(qb, row))
                    record[row.id] = std::move(*text);
        return record;
    }

    static constexpr const char* kClasses[] = {"SYS", "COS", "MTS", "PSI", "SMS", "MSG", "CRT"};
};

TEST_F(HostileRows, PipeSizes) {
    for (const char* row : {"{'ID':'s1','parentID':'m1','text':'t','CreateTime':1,'content':{'roughness':0.5,'sizeList'"
                            ":[{'DN':15,'OD':'21','ID':16.1,'Thickness':2.6}]}}",
                            "{'ID':'m1','parentID':'','text':'t','CreateTime':1}"})
        SpoilEach(row, {}, [&](const value& spoilt) { util.SyncPipeSizeTableItem(&qb, 2, spoilt); });
}

TEST_F(HostileRows, OtherSizesAndGroups) {
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"ductSeriesType:下载风管类型失败",
         "'shape':1,'systemPress':1,'series':'x','sizeList':[{'Size':4,'Thickness':5}]"},
        {L"electricWireType:下载导线类型失败",
         "'series':1,'currentUseTemperature':1,'sizeList':[{'area':'2.5','current':6,'temperature':7}]"},
        {L"electricLinePipe:下载线管类型失败", "'sizeList':[{'DN':1,'OD':2,'ID':3}]"},
        {L"cableTray:下载桥架类型失败", "'type':1,'sizeList':[{'Size':4}]"},
        {L"ductFittingGroup:下载管配件组合的分组失败", ""},
        {L"pipeFittingGroup:下载管配件组合的分组失败", ""},
    };
    for (const auto& [failure, content] : rows) {
        const std::wstring group(failure, std::wstring_view(failure).find(L':'));
        SpoilEach("{'ID':'s1','text':'t','CreateTime':1,'content':{" + std::string(content) + "}}", {failure},
                  [&](const value& row) { util.SyncSizeTableExceptPipeAndGroupTableItem(&qb, group, L"s1", row); });
    }
}

TEST_F(HostileRows, Series) {
    const std::pair<short, const char*> links[] = {
        {1, "'PipeSegmentId':'p','parentID':'g'"}, {3, "'type':1"}, {4, "'parentID':'s'"}};
    for (const auto& [type, link] : links)
        SpoilEach("{'ID':'s1','name':'n','CreateTime':1,'minSize':1,'maxSize':2,'preferredConnect':1," +
                      std::string(link) +
                      ",'connective':2,'Elbow':[{'categoryCode':'cat','id':'e','FittingPartType':1,'min':1,'max':2}],"
                      "'HorizontalTee':[]}",
                  {}, [&, type = type](const value& row) { util.SyncMaterialSerie(row, &qb, type, 3); });
    SpoilDeletion(
        "{'PipeType':[{'ID':'s1'}]}", {L"删除管配件组合失败"},
        [&] { util.SyncMaterialSerie(Row("{'ID':'s1','name':'n'}"), &qb, 1, 2); },
        [&](const value& del) {
            if (del.is_object() && (!del.has_field("PipeType") || del.at("PipeType").is_array()))
                util.SyncDeletedMaterialSerie(del.as_object(), &qb, L"PipeType");
        });
}

TEST_F(HostileRows, SystemTypes) {
    const std::string row = "{'ID':'y1','systemType':'n','code':'c','description':'d','systemCategory':1,'CreateTime':"
                            "1,'fittingIds':['a'],'bindIDs':['b']}";
    for (const short discipline : {short{2}, short{3}})
        SpoilEach(row, {}, [&](const value& spoilt) { util.SyncSystemTypes(&qb, 1, discipline, {spoilt}); });
    SpoilDeletion(
        "{'PipeSystemType':[{'ID':'y1'}]}", {L"删除系统类型失败"}, [&] { util.SyncSystemTypes(&qb, 1, 2, {Row(row)}); },
        [&](const value& del) {
            if (del.is_object())
                util.SyncDeletedSystemType(del.as_object(), &qb, L"PipeSystemType");
        });
}

TEST_F(HostileRows, CircuitTemplates) {
    const std::string row =
        "{'CircuitTemplate':[{'ID':'r1','SystemClassification':41,'SystemTypeId':'y','SwitchComponentId1':'i',"
        "'SwitchComponentId2':'i','SwitchComponentId3':'i','SwitchComponentType1':'t','SwitchComponentType2':"
        "'t','SwitchComponentType3':'t','Phase':4,'ProtectionMaterial':'p','WireType':'w','WireSpec':'s',"
        "'WireCountStr':'3','ConduitType':'c','ConduitSizeDN':20,'IsApply':1,'LayingMode':'l'}]}";
    SpoilEach(row, {L"CircuitTemplate:下载回路模板失败"}, [&](const value& add) { AddOther(add); });
    SpoilDeletion(
        row, {L"删除回路模板失败"}, [&] { AddOther(Row(row)); }, [&](const value& del) { DeleteOther(del); });
}

TEST_F(HostileRows, BinaryFiles) {
    const std::string row = "{'BinaryTable':[{'fileName':'f','length':3,'data':'Zm9v'}]}";
    Spoil(Row(row), [&](const SpoiltRow& spoilt) { AddOther(spoilt.row); });
    ExpectInOrder({L"BinaryTable:下载文件失败"});
    Spoil(Row(row), [&](const SpoiltRow& spoilt) { DeleteOther(spoilt.row); });
    ExpectInOrder({L"删除单文件失败"});
}

TEST_F(HostileRows, CombinedProducts) {
    const value row =
        Row("{'ID':'k','Name':'n','Spacing':1,'List':[{'CategoryStandardCode':'cat','ComponentId':'a',"
            "'ComponentTypeId':'t'}],'EquipmentComponentId':'e','EquipmentComponentTypeId':'t',"
            "'EquipmentCategoryStandardCode':'cat','SupplyAirTerminalComponentId':'s',"
            "'SupplyAirTerminalComponentTypeId':'t','AirTerminalCategoryStandardCode':'cat',"
            "'ReturnAirTerminalComponentId':'r','ReturnAirTerminalComponentTypeId':'t','SupplySystemTypeId':'s',"
            "'SupplyAirTerminalDist1':1,'SupplyAirTerminalDist2':2,'SupplyAirTerminalNumber':3,"
            "'SupplyDuctTypeId':'d','SupplyHoseLength':4,'ReturnSystemTypeId':'s','ReturnDuctTypeId':'d',"
            "'ReturnHoseLength':5}");
    for (const wchar_t* code : {L"16353515", L"16352020"}) {
        Spoil(row, [&](const SpoiltRow& spoilt) {
            tolm::TolmCombinedProduct product;
            try {
                util.GetCombinedProductFromJson(code, spoilt.row, product);
            } catch (const web::json::json_exception&) {
                // The section's handler is for these.
            }
        });
        ExpectInOrder({L"ID为空", L"Name为空", L"partList.size()为0"});
    }
}

TEST_F(HostileRows, DeletionsOfTheConfigurationTree) {
    SpoilDeletion(
        "{'ConfigTree':[{'groupName':'MaterialSeries','ID':'a','parentID':''},{'groupName':'ductSeriesType',"
        "'ID':'b'},{'groupName':'electricWireType','ID':'c'}]}",
        {},
        [&] {
            MakeRecord("MTS", L"a", L"n", 1, 2);
            MakeRecord("PSI", L"b", L"n", 2, 1);
            MakeRecord("PSI", L"c", L"n", 5, 3);
        },
        [&](const value& del) {
            try {
                tolm::DeleteConfigTreeItems(del.as_object(), &qb);
            } catch (const web::json::json_exception&) {
                // The refresh ends with these.
            }
        });
}

/// A row stands for itself: its names may stand twice, where those of the increment may not.
class DoubledNames : public RefreshFixture {};

TEST_F(DoubledNames, OfARowCountAsTheFirstOfThem) {
    LocalHas(3);
    Put(schema::kMaterial, L"m3", L"first of the deleted");
    Put(schema::kMaterial, L"m4", L"second of the deleted");
    CloudHas(5,
             R"({"ConfigTree":[{"ID":"m1","ID":"m2","groupName":"MaterialSeries","groupName":"cableTray",)"
             R"("parentID":"","parentID":"m9","text":"first","text":"second"}]})",
             R"({"ConfigTree":[{"ID":"m3","ID":"m4","groupName":"MaterialSeries","parentID":""}]})");
    EXPECT_TRUE(Refresh());
    EXPECT_EQ(TakeNotifications(), Loaded);
    EXPECT_EQ(Records(schema::kMaterial), (RecordLines{"m4 second of the deleted - -", "m1 first 1 2"}));
    EXPECT_EQ(Records(schema::kSizeModule), RecordLines{});
    EXPECT_EQ(LocalVersion(), 5);
}

} // namespace
} // namespace tolmtest
