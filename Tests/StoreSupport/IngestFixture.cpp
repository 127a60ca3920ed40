#include "StoreSupport/IngestFixture.h"

#include "Host/Components.h"
#include "Host/Definitions.h"
#include "MepDatabase/StoreSchema.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <bit>

namespace tolmtest {
namespace {

std::string LittleEndian(std::uint32_t bits, int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>((bits >> (8 * i)) & 0xFFU);
    return bytes;
}

} // namespace

web::json::value Json(const std::string& text) {
    return web::json::value::parse(text);
}

web::json::value Row(std::string text) {
    std::replace(text.begin(), text.end(), '\'', '"');
    return Json(text);
}

web::json::value With(web::json::value base, const std::string& more) {
    const web::json::value members = Row(more);
    for (const auto& [key, value] : members.as_object())
        base[key] = value;
    return base;
}

web::json::value Without(web::json::value base, const std::string& key) {
    base.erase(key);
    return base;
}

std::string PackedFloats(const Floats& values) {
    std::string bytes;
    for (const float value : values)
        bytes += LittleEndian(std::bit_cast<std::uint32_t>(value), 4);
    return bytes;
}

std::string PackedInt32(std::int32_t value) {
    return LittleEndian(static_cast<std::uint32_t>(value), 4);
}

std::string PackedInt16(std::int16_t value) {
    return LittleEndian(static_cast<std::uint16_t>(value), 2);
}

std::string PackedText(std::string_view text, std::size_t width) {
    std::string bytes(text);
    bytes.resize(width, '\0');
    return bytes;
}

void IngestFixture::SetUp() {
    ASSERT_TRUE(qb.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, true));
    ASSERT_TRUE(qb.lockForUpdate());
}

void IngestFixture::TearDown() {
    EXPECT_TRUE(qb.closeDatabase());
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(nullptr);
}

void IngestFixture::ProvideCategories(const std::vector<std::string>& codes) {
    std::vector<tolm::TolmCategoryData> categories;
    for (const std::string& narrow : codes) {
        const wstring code = vorn::StringUtil::ToWString(narrow);
        categories.push_back({code, L"", L"d", L"name of " + code, L"english name of " + code});
    }
    const wstring components = folder.File(L"components.db");
    ASSERT_TRUE(tolm::TolmComponentSqlUtil::Import(components, {{L"d", L"discipline", L"discipline"}}, categories, {}));
    tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(components));
}

bool IngestFixture::Exists(const char* classCode, const wstring& id) {
    return qb.existRec(classCode, id);
}

int IngestFixture::Count(const char* classCode) {
    return static_cast<int>(Ids(classCode).size());
}

Texts IngestFixture::Ids(const char* classCode) {
    Texts ids;
    qb.resetFilters();
    for (bool more = qb.fetchFirstMember(classCode); more; more = qb.fetchNextMember()) {
        CWsz id;
        EXPECT_TRUE(qb.getObjId(id));
        ids.push_back(id.str());
    }
    return ids;
}

std::optional<short> IngestFixture::Short(const char* classCode, const wstring& id, short attribute) {
    short value = 0;
    EXPECT_TRUE(qb.fetchEqualRec(classCode, id));
    return qb.getShort(attribute, value) ? std::optional(value) : std::nullopt;
}

std::optional<float> IngestFixture::Float(const char* classCode, const wstring& id, short attribute) {
    float value = 0.0F;
    EXPECT_TRUE(qb.fetchEqualRec(classCode, id));
    return qb.getFloat(attribute, value) ? std::optional(value) : std::nullopt;
}

std::optional<double> IngestFixture::Double(const char* classCode, const wstring& id, short attribute) {
    double value = 0.0;
    EXPECT_TRUE(qb.fetchEqualRec(classCode, id));
    return qb.getDouble(attribute, value) ? std::optional(value) : std::nullopt;
}

std::optional<wstring> IngestFixture::Text(const char* classCode, const wstring& id, short attribute) {
    CWsz value;
    EXPECT_TRUE(qb.fetchEqualRec(classCode, id));
    return qb.getWsz(attribute, value, 1) ? std::optional(value.str()) : std::nullopt;
}

std::optional<Texts> IngestFixture::TextList(const char* classCode, const wstring& id, short attribute) {
    CWszArray values;
    EXPECT_TRUE(qb.fetchEqualRec(classCode, id));
    if (!qb.getWszArray(attribute, values, 100, -1))
        return std::nullopt;
    Texts texts;
    for (int i = 0; i < values.length(); ++i)
        texts.push_back(values.wszAt(i).str());
    return texts;
}

std::optional<Floats> IngestFixture::FloatList(const char* classCode, const wstring& id, short attribute) {
    CFloatArray values;
    EXPECT_TRUE(qb.fetchEqualRec(classCode, id));
    if (!qb.getFloatArray(attribute, values))
        return std::nullopt;
    Floats floats;
    for (int i = 0; i < values.length(); ++i)
        floats.push_back(values.valueAt(i));
    return floats;
}

std::optional<std::string> IngestFixture::Bytes(const char* classCode, const wstring& id, short attribute) {
    CByteBuffer bytes;
    int count = 0;
    EXPECT_TRUE(qb.fetchEqualRec(classCode, id));
    if (!qb.getBinaryArray(attribute, bytes, count))
        return std::nullopt;
    EXPECT_EQ(count, bytes.dataLen());
    return std::string(bytes.data(), static_cast<std::size_t>(bytes.dataLen()));
}

void IngestFixture::MakeRecord(const char* classCode, const wstring& id, const wstring& name, short mepType,
                               short disciplineId) {
    ASSERT_TRUE(qb.createRec(classCode, id));
    qb.setWsz(tolm::schema::kName, name.c_str(), -1);
    qb.setShort(tolm::schema::kMEPType, mepType);
    qb.setShort(tolm::schema::kDisciplineId, disciplineId);
    ASSERT_TRUE(qb.saveRec());
}

} // namespace tolmtest
