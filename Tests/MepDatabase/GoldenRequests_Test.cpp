#include "StoreSupport/UploadRecords.h"

#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "StoreSupport/CloudTestSupport.h"
#include "StoreSupport/IngestFixture.h"
#include "Support/Golden.h"

/// What goes over the wire, to the byte: one file for each table and each endpoint under Tests/Data/Requests.
namespace tolmtest {
namespace {

using web::json::value;

class GoldenRequests : public testing::Test {
protected:
    void SetUp() override { server.On("/", ScriptedAnswer::Data(R"({"version":8})")); }
    void Expect(const std::string& name) {
        ExpectGolden("Data/Requests/" + name + ".txt", Recorded(server), "What goes over the wire");
    }

    ScriptedServer server;
    TestSession session{server.Address()};
};

/// One kind of row, sent as a creation, bare, and as an edit, wrapped.
struct Kind {
    const char* name;
    bool (*send)(bool isCreated);
};

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

template <Type type, Discipline discipline> bool SendSize(bool isCreated) {
    return Client().SendCreatedOrEditedSizeModelList(L"P1", {Shared(FullSize(type, discipline))}, true, isCreated);
}

template <Type type, Discipline discipline> bool SendMaterial(bool isCreated) {
    auto material = Shared(Material(L"mts-1", L"镀锌钢管", type, discipline, 1'700'000'000'000));
    return Client().SendCreatedOrEditedMateriaList(L"P1", {material}, true, isCreated);
}

template <Type type, Discipline discipline> bool SendGroup(bool isCreated) {
    auto group = Shared(Group(L"msg-1", L"沟槽连接", type, discipline, 1'700'000'000'001));
    return Client().SendCreatedOrEditedMaterieSerieGroupList(L"P1", {group}, true, isCreated);
}

template <Type type, Discipline discipline> bool SendSystemType(bool isCreated) {
    return Client().SendCreatedOrEditedSystemTypeList(L"P1", {Shared(FullSystemType(type, discipline))}, true,
                                                      isCreated);
}

template <Type type, Discipline discipline> bool SendSerie(bool isCreated) {
    return Client().SendCreatedOrEditedMEPMaterialSerieList(L"P1", {Shared(FullSerie(type, discipline))}, true,
                                                            isCreated);
}

constexpr Kind kKinds[] = {
    {"MaterialSeries.sizes", SendSize<Type::Pipe, Discipline::Plumbing>},
    {"HVACMaterialSeries.sizes", SendSize<Type::Pipe, Discipline::HVAC>},
    {"ductSeriesType", SendSize<Type::Duct, Discipline::HVAC>},
    {"electricWireType", SendSize<Type::Wire, Discipline::Electrical>},
    {"electricLinePipe", SendSize<Type::Conduit, Discipline::Electrical>},
    {"cableTray", SendSize<Type::CableTray, Discipline::Electrical>},
    {"MaterialSeries.material", SendMaterial<Type::Pipe, Discipline::Plumbing>},
    {"HVACMaterialSeries.material", SendMaterial<Type::Pipe, Discipline::HVAC>},
    {"pipeFittingGroup", SendGroup<Type::Pipe, Discipline::Plumbing>},
    {"havcFittingGroup", SendGroup<Type::Pipe, Discipline::HVAC>},
    {"ductFittingGroup", SendGroup<Type::Duct, Discipline::HVAC>},
    {"PipeSystemType", SendSystemType<Type::Pipe, Discipline::Plumbing>},
    {"HVACPipeSystemType", SendSystemType<Type::Pipe, Discipline::HVAC>},
    {"DuctSystemType", SendSystemType<Type::Duct, Discipline::HVAC>},
    {"ElectricalSystemType", SendSystemType<Type::ElectricalSystem, Discipline::Electrical>},
    {"PipeType", SendSerie<Type::Pipe, Discipline::Plumbing>},
    {"HVACPipeType", SendSerie<Type::Pipe, Discipline::HVAC>},
    {"DuctType", SendSerie<Type::Duct, Discipline::HVAC>},
    {"ConduitFittingsType", SendSerie<Type::Conduit, Discipline::Electrical>},
    {"CableTrayFittingsType", SendSerie<Type::CableTray, Discipline::Electrical>},
};

class GoldenRows : public GoldenRequests, public testing::WithParamInterface<Kind> {};

TEST_P(GoldenRows, GoOutAsRecorded) {
    EXPECT_TRUE(GetParam().send(true));
    EXPECT_TRUE(GetParam().send(false));
    Expect(GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Each, GoldenRows, testing::ValuesIn(kKinds), [](const auto& kind) {
    return std::regex_replace(std::string(kind.param.name), std::regex("\\."), "_");
});

TEST_F(GoldenRequests, RemovalsGoOutAsRecorded) {
    EXPECT_TRUE(Client().SendRemovedDataList(L"P1", {L"sys-1", L"系统-2"}, L"PipeSystemType"));
    Expect("RemoveList");
}

TEST_F(GoldenRequests, TheStatusOfAWorkUnitsDataGoesOutAsRecorded) {
    EXPECT_TRUE(Client().SendUpdateSettingDataInfo(L"P1", L"W1", {L"sys-1", L"sys-2"}, 0));
    EXPECT_TRUE(Client().SendUpdateSettingDataInfo(L"P1", L"W1", {L"sys-1"}, 1));
    Expect("uploadData");
}

/// All families behind each other, as a patch has them.
value Gathered(bool isCreated) {
    auto& client = Client();
    value target;
    int index = 0;
    const auto pipe = Type::Pipe;
    const auto plumbing = Discipline::Plumbing;
    client.SendCreatedOrEditedSystemTypeList(target, L"P1", {Shared(FullSystemType(pipe, plumbing))}, false, isCreated);
    client.SendCreatedOrEditedMEPMaterialSerieList(target, L"P1", {Shared(FullSerie(pipe, plumbing))}, false,
                                                   isCreated);
    client.SendCreatedOrEditedSizeModelList(target, index, L"P1", {Shared(FullSize(pipe, plumbing))}, false, isCreated);
    client.SendCreatedOrEditedMateriaList(target, index, L"P1", {Shared(Material(L"mts-1", L"钢"))}, false, isCreated);
    client.SendCreatedOrEditedMaterieSerieGroupList(target, index, L"P1", {Shared(Group(L"msg-1", L"g"))}, false,
                                                    isCreated);
    return target;
}

value Removed() {
    value target;
    int index = 0;
    Client().AddRemovedDataIds(target, L"P1", {L"sys-9"}, L"DuctSystemType");
    Client().AddRemovedConfigTreeIds(target, index, L"P1", {L"psi-8", L"psi-9"}, L"ConfigTree");
    Client().AddRemovedConfigTreeIds(target, index, L"P1", {L"mts-9"}, L"ConfigTree");
    return target;
}

TEST_F(GoldenRequests, APatchGoesOutAsRecorded) {
    auto patch = Row("{'tolm_version':'1.2.3','version':7,'force':1,'userID':'user-1','recoveryList':{}}");
    patch["createList"] = Gathered(true);
    patch["editList"] = Gathered(false);
    patch["removeList"] = Removed();
    int version = 0;
    EXPECT_TRUE(Client().SendPatchDataEvent(L"P1", patch, version));
    EXPECT_EQ(version, 8);
    Expect("UpLoad");
}

} // namespace
} // namespace tolmtest
