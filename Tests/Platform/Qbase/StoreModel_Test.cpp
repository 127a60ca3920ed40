#include "StoreFixture.h"

#include <rapidcheck.h>

#include <algorithm>
#include <map>
#include <optional>

namespace qbasetest {
namespace {

/// What a store must do, kept in memory: records in order of creation.
struct Model {
    struct Entry {
        std::string classCode;
        std::wstring id;
        std::optional<short> type;
        std::optional<short> discipline;
        std::optional<std::wstring> name;
        bool gone = false;
    };
    std::vector<Entry> entries;

    int Find(const std::string& classCode, const std::wstring& id) const {
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (!entries[i].gone && entries[i].classCode == classCode && entries[i].id == id)
                return static_cast<int>(i);
        }
        return -1;
    }
};

/// A store and its model, on which the same operations are done.
class Pair {
public:
    Pair(const std::wstring& definition, const std::wstring& path) : m_definition(definition), m_path(path) {
        RC_ASSERT(CQbase::removeStore(path));
        Open();
    }

    void Step(int operation) {
        switch (operation) {
        case 0:
        case 1:
            return Create();
        case 2:
            return SetAndSave();
        case 3:
            return Delete();
        case 4:
            return FetchEqual();
        case 5:
            return FetchFirst();
        case 6:
        case 7:
            return FetchNext(false);
        case 8:
            return FetchNext(true);
        case 9:
            return SetFilter();
        case 10:
            return ResetFilters();
        default:
            return Reopen(operation == 11);
        }
    }

    void CompareAll() {
        ResetFilters();
        for (const char* classCode : {"AAA", "BBB"}) {
            Ids expected;
            for (const auto& entry : m_model.entries) {
                if (!entry.gone && entry.classCode == classCode)
                    expected.push_back(entry.id);
            }
            Ids found;
            for (bool more = m_qb.fetchFirstMember(classCode); more; more = m_qb.fetchNextMember())
                found.push_back(IdOf());
            RC_ASSERT(found == expected);
        }
    }

private:
    static std::string AnyClass() { return *rc::gen::element<std::string>("AAA", "BBB"); }
    static std::wstring AnyId() { return L"id " + std::to_wstring(*rc::gen::inRange(0, 8)); }
    static short AnySmall() { return *rc::gen::inRange<short>(0, 3); }

    void Open() {
        RC_ASSERT(m_qb.openDatabase(m_definition, m_path, true));
        RC_ASSERT(m_qb.lockForUpdate());
        m_current = -1;
        m_saved = m_model;
    }

    void Reopen(bool keep) {
        if (keep) {
            RC_ASSERT(m_qb.closeDatabase());
        } else {
            m_qb.abandon();
            m_model = m_saved;
        }
        Open();
        ResetFilters();
    }

    void Create() {
        const std::string classCode = AnyClass();
        const std::wstring id = AnyId();
        const bool isNew = m_model.Find(classCode, id) < 0;
        RC_ASSERT(m_qb.createRec(classCode.c_str(), id) == isNew);
        if (!isNew)
            return;
        const short type = AnySmall();
        RC_ASSERT(m_qb.setShort(kMEPType, type));
        RC_ASSERT(m_qb.saveRec());
        m_model.entries.push_back({classCode, id, type, {}, {}, false});
        m_current = static_cast<int>(m_model.entries.size()) - 1;
    }

    void SetAndSave() {
        const bool isThere = m_current >= 0 && !Current().gone;
        const short type = AnySmall();
        RC_ASSERT(m_qb.setShort(kMEPType, type) == isThere);
        if (!isThere)
            return;
        Current().type = type;
        if (Current().classCode == "AAA") {
            if (AnySmall() == 0) {
                RC_ASSERT(m_qb.removeAttribute(kDisciplineId));
                Current().discipline.reset();
            } else {
                RC_ASSERT(m_qb.setShort(kDisciplineId, type));
                Current().discipline = type;
            }
            const std::wstring name = *rc::gen::arbitrary<std::string>() == "" ? L"" : L"name";
            RC_ASSERT(m_qb.setWsz(kName, name.c_str(), -1));
            Current().name = name;
        }
        RC_ASSERT(m_qb.saveRec());
    }

    void Delete() {
        const std::string classCode = AnyClass();
        const std::wstring id = AnyId();
        const int place = m_model.Find(classCode, id);
        RC_ASSERT(m_qb.deleteRec(classCode.c_str(), id) == (place >= 0));
        if (place >= 0)
            m_model.entries[static_cast<std::size_t>(place)].gone = true;
    }

    void FetchEqual() {
        const std::string classCode = AnyClass();
        const std::wstring id = AnyId();
        Expect(m_qb.fetchEqualRec(classCode.c_str(), id), m_model.Find(classCode, id));
    }

    void FetchFirst() {
        const std::string classCode = AnyClass();
        Expect(m_qb.fetchFirstMember(classCode.c_str()), NextPassing(-1, classCode));
    }

    void FetchNext(bool anyClass) {
        const bool found = anyClass ? m_qb.fetchNextRec() : m_qb.fetchNextMember();
        Expect(found, m_current < 0 ? -1 : NextPassing(m_current, anyClass ? "" : Current().classCode));
    }

    void SetFilter() {
        const short attribute = *rc::gen::element(short{kMEPType}, short{kDisciplineId});
        const short value = AnySmall();
        RC_ASSERT(m_qb.setFilter(attribute, "=", value));
        m_filters.emplace_back(attribute, value);
    }

    void ResetFilters() {
        m_qb.resetFilters();
        m_filters.clear();
    }

    bool Passes(const Model::Entry& entry) const {
        return std::ranges::all_of(m_filters, [&](const auto& filter) {
            return (filter.first == kMEPType ? entry.type : entry.discipline) == filter.second;
        });
    }

    int NextPassing(int after, const std::string& classCode) const {
        for (std::size_t i = static_cast<std::size_t>(after + 1); i < m_model.entries.size(); ++i) {
            const auto& entry = m_model.entries[i];
            if (!entry.gone && (classCode.empty() || entry.classCode == classCode) && Passes(entry))
                return static_cast<int>(i);
        }
        return -1;
    }

    /// A fetch found what the model says, or nothing, and then the current record is the one it was.
    void Expect(bool found, int place) {
        RC_ASSERT(found == (place >= 0));
        if (found)
            m_current = place;
        if (m_current < 0 || Current().gone)
            return;
        RC_ASSERT(IdOf() == Current().id);
        short type = -1;
        short discipline = -1;
        CWsz name;
        RC_ASSERT(m_qb.getShort(kMEPType, type) == Current().type.has_value() && type == Current().type.value_or(-1));
        if (Current().classCode != "AAA")
            return;
        RC_ASSERT(m_qb.getShort(kDisciplineId, discipline) == Current().discipline.has_value());
        RC_ASSERT(discipline == Current().discipline.value_or(-1));
        RC_ASSERT(m_qb.getWsz(kName, name, 1) == Current().name.has_value());
        RC_ASSERT(name.str() == Current().name.value_or(L""));
    }

    std::wstring IdOf() {
        CWsz id;
        RC_ASSERT(m_qb.getObjId(id));
        return id.str();
    }

    Model::Entry& Current() { return m_model.entries[static_cast<std::size_t>(m_current)]; }

    std::wstring m_definition;
    std::wstring m_path;
    CQbase m_qb;
    Model m_model;
    Model m_saved;
    std::vector<std::pair<short, short>> m_filters;
    int m_current = -1;
};

using StoreModel = StoreTest;

TEST_F(StoreModel, AStoreDoesWhatItsModelDoes) {
    const bool held = rc::check([&] {
        Pair pair(m_definition, m_path);
        const auto operations = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 13));
        for (const int operation : operations)
            pair.Step(operation);
        pair.CompareAll();
    });
    EXPECT_TRUE(held);
}

} // namespace
} // namespace qbasetest
