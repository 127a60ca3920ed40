#include "Tolm/Profile.h"

#include "Tolm/Errors.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <array>
#include <fstream>

namespace tolmcli {
namespace {

using vorn::StringUtil;

struct Field {
    const char* key;
    std::wstring Profile::*member;
};

constexpr std::array kFields{
    Field{"server", &Profile::server},
    Field{"project", &Profile::project},
    Field{"workUnit", &Profile::workUnit},
    Field{"user", &Profile::user},
    Field{"componentFile", &Profile::componentFile},
    Field{"combinedProductFile", &Profile::combinedProductFile},
    Field{"binaryFolder", &Profile::binaryFolder},
};

std::wstring Stem(const std::wstring& datasetPath) {
    return datasetPath.substr(0, datasetPath.rfind(L'.'));
}

} // namespace

void CheckDatasetPath(const std::wstring& datasetPath) {
    const auto point = datasetPath.rfind(L'.');
    const auto separator = datasetPath.find_last_of(L"/\\");
    if (point == std::wstring::npos || (separator != std::wstring::npos && point < separator))
        throw Failure("the dataset's file name needs an extension, as in project.db", Misused);
}

std::wstring Profile::PathFor(const std::wstring& datasetPath) {
    return Stem(datasetPath) + L".tolm.json";
}

Profile Profile::ForNew(const std::wstring& datasetPath) {
    Profile profile;
    profile.componentFile = Stem(datasetPath) + L"_Components.db";
    profile.combinedProductFile = Stem(datasetPath) + L"_CombinedProducts.db";
    profile.binaryFolder = Stem(datasetPath) + L"_Files";
    return profile;
}

Profile Profile::Load(const std::wstring& datasetPath) {
    const std::string path = vorn::FileSystem::ToNative(PathFor(datasetPath));
    std::ifstream in(path);
    if (!in)
        throw Failure("there is no " + path + ": make the dataset with 'tolm new' first");
    const auto json = nlohmann::json::parse(in, nullptr, false);
    if (!json.is_object())
        throw Failure(path + " is no profile of a dataset");
    Profile profile = ForNew(datasetPath);
    for (const Field& field : kFields) {
        const auto found = json.find(field.key);
        if (found != json.end() && found->is_string())
            profile.*field.member = StringUtil::ToWString(found->get_ref<const std::string&>());
    }
    return profile;
}

void Profile::Save(const std::wstring& datasetPath) const {
    nlohmann::ordered_json json;
    for (const Field& field : kFields)
        json[field.key] = StringUtil::ToString(this->*field.member);
    const std::string text = json.dump(2) + "\n";
    const std::wstring path = PathFor(datasetPath);
    if (!vorn::FileUtility::SaveInBinaryMode(path, text.data(), text.size(), false))
        throw Failure("cannot write " + StringUtil::ToString(path));
}

} // namespace tolmcli
