#pragma once

#include "Host/Components.h"
#include "TolmDataSet/MepEnums.h"
#include "Vorn/Guid.h"

#include <map>
#include <new>
#include <string>

namespace tolmtest {

/// Lets records come into being for a while and then run out of memory: after `count` identifiers, making another
/// fails.
class MemoryForRecords {
public:
    explicit MemoryForRecords(int count) {
        s_left = count;
        vorn::GuidUtils::SetGenerator(&Next);
    }
    ~MemoryForRecords() { vorn::GuidUtils::SetGenerator(nullptr); }
    MemoryForRecords(const MemoryForRecords&) = delete;
    MemoryForRecords& operator=(const MemoryForRecords&) = delete;

private:
    static vorn::Guid Next() {
        if (s_left-- <= 0)
            throw std::bad_alloc();
        vorn::Guid guid;
        guid.bytes[15] = static_cast<std::uint8_t>(s_left);
        return guid;
    }
    static inline int s_left = 0;
};

/// A component that counts how many of its kind live.
class CountedComponent : public tolm::ITolmProjectSettingComponent {
public:
    explicit CountedComponent(std::wstring id) : m_id(std::move(id)) { ++s_living; }
    ~CountedComponent() override { --s_living; }
    vorn::OwnerPtr<ITolmProjectSettingComponent> Clone() const override { return Make(m_id); }
    std::wstring GetId() const override { return m_id; }
    std::wstring GetCategoryCode() const override { return L"elbow"; }
    int GetVersion() const override { return 1; }
    __int64 GetPublicComponentId() const override { return 0; }
    std::wstring GetComponentTypeId() const override { return {}; }
    std::wstring GetName() const override { return {}; }
    std::map<std::wstring, std::wstring> GetAttributes() const override { return {}; }

    static vorn::OwnerPtr<ITolmProjectSettingComponent> Make(const std::wstring& id) {
        return vorn::MakeOwner<CountedComponent>(id);
    }
    static int Living() { return s_living; }

private:
    std::wstring m_id;
    static inline int s_living = 0;
};

/// Records whose release a test can watch.
template <class Record> class Tracked {
public:
    static vorn::OwnerPtr<Record> Make() {
        auto owner = Record::Create();
        Record* const record = owner.get();
        s_living.emplace(record, std::move(owner));
        return {record, [](void* released) { s_living.erase(released); }};
    }
    static std::size_t Living() { return s_living.size(); }

private:
    static inline std::map<void*, vorn::OwnerPtr<Record>> s_living;
};

/// Sets a text through a setter that takes it by reference.
template <class Record> void SetText(Record& record, void (Record::*setter)(std::wstring&), std::wstring text) {
    (record.*setter)(text);
}

/// True for 36 lower-case characters of a GUID without braces.
inline bool IsPlainGuid(const std::wstring& id) {
    return id.size() == 36 && id.find_first_not_of(L"0123456789abcdef-") == std::wstring::npos && id[8] == L'-' &&
           id[13] == L'-' && id[18] == L'-' && id[23] == L'-';
}

} // namespace tolmtest
