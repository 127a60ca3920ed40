#pragma once

#include "Host/Categories.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Qbase/Qbase.h"
#include "Support/DebugWarnings.h"
#include "Support/TempFolder.h"

#include <cpprest/json.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tolmtest {

using tolm::wstring;
using Lines = std::vector<std::wstring>;
using Floats = std::vector<float>;
using Texts = std::vector<wstring>;

/// The value of a JSON text.
web::json::value Json(const std::string& text);
/// The text with every `'` as a double quote: {'ID':'a'} reads better in a test than its escaped form.
web::json::value Row(std::string text);
/// `base` with the members of `more` added or put in place of its own.
web::json::value With(web::json::value base, const std::string& more);
/// `base` without the member.
web::json::value Without(web::json::value base, const std::string& key);

/// Bytes of a packed list.
std::string PackedFloats(const Floats& values);
std::string PackedInt32(std::int32_t value);
std::string PackedInt16(std::int16_t value);
/// Text in a field of this width, zeros behind it.
std::string PackedText(std::string_view text, std::size_t width);

/// A fresh store, open for update, and what is read back from it.
class IngestFixture : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Puts the categories of a component database in place, all under one discipline.
    void ProvideCategories(const std::vector<std::string>& codes);

    bool Exists(const char* classCode, const wstring& id);
    int Count(const char* classCode);
    /// Ids of a class, in order of creation.
    Texts Ids(const char* classCode);

    std::optional<short> Short(const char* classCode, const wstring& id, short attribute);
    std::optional<float> Float(const char* classCode, const wstring& id, short attribute);
    std::optional<double> Double(const char* classCode, const wstring& id, short attribute);
    std::optional<wstring> Text(const char* classCode, const wstring& id, short attribute);
    std::optional<Texts> TextList(const char* classCode, const wstring& id, short attribute);
    std::optional<Floats> FloatList(const char* classCode, const wstring& id, short attribute);
    std::optional<std::string> Bytes(const char* classCode, const wstring& id, short attribute);

    /// Makes a record with a name, an object type and a discipline.
    void MakeRecord(const char* classCode, const wstring& id, const wstring& name, short mepType, short disciplineId);

    TempFolder folder;
    const wstring path = folder.File(L"set.db");
    CQbase qb;
    tolm::MepQbaseUtil& util = *tolm::MepQbaseUtil::GetInstance();
};

} // namespace tolmtest
