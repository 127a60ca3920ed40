#include "Fuzz/Support/StoreReading.h"
#include "Host/Categories.h"
#include "Host/Components.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreContent.h"
#include "StoreSupport/StoreFixture.h"
#include "Vorn/Text.h"

#include <cstdlib>
#include <ostream>

/// Files that earlier versions wrote, see Tests/Data/Stores.
namespace tolmtest {
namespace {

struct OldStore {
    const char* title;
    const char* folder;
    const char* name;
    const char* counts; ///< of the records of each class
    int version;        ///< of the cloud
    bool hasStatus;
};

void PrintTo(const OldStore& store, std::ostream* out) {
    *out << store.title;
}

constexpr OldStore kOldStores[] = {
    {"PulledWithFormat1", "1", "pulled", "SYS 8; COS 10; MTS 4; PSI 11; SMS 10; MSG 3; CRT 2; ", 1, false},
    {"EditedWithFormat1", "1", "edited", "SYS 8; COS 10; MTS 5; PSI 12; SMS 9; MSG 3; CRT 2; ", 1, true},
};

/// As many slices as the lists are read for.
constexpr std::size_t kTurns = 7;

class OldStores : public StoreFixture, public testing::WithParamInterface<OldStore> {
protected:
    OldStores() {
        Unpack(GetParam().name + std::string(".db"), path);
        if (GetParam().hasStatus)
            Unpack(GetParam().name + std::string("_Status.db"), statusPath);
        Unpack("components.db", components);
        Unpack("combined.db", combined);
        tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils(tolm::CreateCategoryInfoUtils(components));
    }
    ~OldStores() override { tolm::TolmCategoryInfoUtilsHandler::Get().SetUtils({}); }

    static void Unpack(const std::string& name, const wstring& to) {
        const std::string command = "gzip -dc '" TOLM_SOURCE_DIR "/Tests/Data/Stores/" +
                                    std::string(GetParam().folder) + "/" + name + ".gz' > '" +
                                    vorn::StringUtil::ToString(to) + "'";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }

    /// Each class is listed for each slice once.
    void ExpectEachListIsWhole() const {
        for (std::size_t turn = 0; turn < kTurns; ++turn)
            EXPECT_EQ(tolmfuzz::ReadLists(path, components, turn), "");
        EXPECT_EQ(SqlValue(path, "PRAGMA integrity_check"), "ok");
    }

    const wstring components = folder.File(L"components.db");
    const wstring combined = folder.File(L"combined.db");
};

TEST_P(OldStores, AreReadWholeAndLeftAsTheyAre) {
    const std::string before = FileBytes(path);
    EXPECT_EQ(tolmfuzz::CountRecords(path), GetParam().counts);
    ExpectEachListIsWhole();
    bool changed = false;
    EXPECT_EQ(util.GetLocalVersion(path, ddq, changed), GetParam().version);
    EXPECT_EQ(changed, GetParam().hasStatus);
    EXPECT_EQ(FileBytes(path), before);
}

TEST_P(OldStores, TakeEditsOfEachKindAndStayInOrder) {
    const std::size_t noted = GetParam().hasStatus ? StatusRecords().size() : 0;
    EXPECT_TRUE(util.WriteMaterial(path, ddq, Material(L"new", L"brass").get()));
    std::vector<MaterialPtr> materials;
    ASSERT_TRUE(util.ReadMaterialList(path, ddq, Type::Pipe, Discipline::Plumbing, materials));
    const auto old =
        std::ranges::find(materials, L"镀锌钢管 Galvanised steel", [](const auto& m) { return m->GetName(); });
    ASSERT_NE(old, materials.end());
    EXPECT_TRUE(util.WriteMaterial(path, ddq, Material((*old)->GetId(), L"renamed").get()));
    EXPECT_TRUE(util.DeleteMaterialList(path, ddq, {Material(L"new", L"").get()}));
    EXPECT_TRUE(util.SetLocalVersion(path, ddq, 2));
    EXPECT_EQ(SqlValue(path, "SELECT count(*) FROM MTS WHERE Name='renamed'"), "1");
    EXPECT_EQ(StatusRecords().size(), noted + 1);
    EXPECT_EQ(SqlValue(statusPath, "PRAGMA integrity_check"), "ok");
    bool changed = false;
    EXPECT_EQ(util.GetLocalVersion(path, ddq, changed), 2);
    ExpectEachListIsWhole();
}

TEST_P(OldStores, HaveTheirComponentsAndProducts) {
    EXPECT_EQ(SqlValue(components, "PRAGMA integrity_check"), "ok");
    EXPECT_EQ(CombinedProductFacts(combined).size(), 4U);
    auto* const utils = tolm::TolmCategoryInfoUtilsHandler::Get().GetUtils();
    ASSERT_NE(utils, nullptr);
    EXPECT_NE(utils->FindCategoryInfo(L"16201010"), nullptr);
    std::vector<std::wstring> ids{L"x"};
    std::vector<tolm::TolmCombinedProduct> products;
    ASSERT_TRUE(tolm::TolmComponentSqlUtil::ReadCombinedProductList(combined, L"", products));
    products.resize(1);
    products[0].Id = L"new";
    EXPECT_TRUE(tolm::TolmComponentSqlUtil::InsertCombinedProduct(combined, products, ids));
    EXPECT_EQ(CombinedProductFacts(combined).size(), 5U);
    EXPECT_EQ(SqlValue(combined, "PRAGMA integrity_check"), "ok");
}

INSTANTIATE_TEST_SUITE_P(Each, OldStores, testing::ValuesIn(kOldStores),
                         [](const auto& store) { return std::string(store.param.title); });

} // namespace
} // namespace tolmtest
