#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"
#include "Vorn/Text.h"

#include <rapidcheck.h>

#include <algorithm>

namespace {

using namespace tolm;
using namespace tolmtest;

/// Text of any characters but zero.
wstring AnyText(int longest) {
    const auto character =
        rc::gen::oneOf(rc::gen::inRange(1, 0x80), rc::gen::inRange(0x80, 0xD800), rc::gen::inRange(0xE000, 0x110000));
    const auto codes = *rc::gen::resize(longest, rc::gen::container<std::vector<int>>(character));
    wstring text;
    for (const int code : codes)
        text += static_cast<wchar_t>(code);
    return text;
}

float AnyFloat() {
    return *rc::gen::arbitrary<float>();
}

__int64 AnyTime() {
    return *rc::gen::inRange<__int64>(-(1LL << 53), (1LL << 53) + 1);
}

SizeModulePtr AnyModule() {
    const auto type = static_cast<Type>(*rc::gen::inRange(1, 6));
    const auto discipline = static_cast<Discipline>(*rc::gen::inRange(1, 4));
    auto module = SizeModule(L"module", AnyText(40), type, discipline, AnyTime());
    module->SetRoughness(*rc::gen::arbitrary<double>());
    module->SetPressureGrade(static_cast<PressureGrade>(*rc::gen::arbitrary<short>()));
    module->SetDuctShape(static_cast<SectionType>(*rc::gen::arbitrary<short>()));
    module->SetCableTrayShape(static_cast<CableTrayShape>(*rc::gen::arbitrary<short>()));
    module->SetCableMaterial(static_cast<CableMaterial>(*rc::gen::arbitrary<short>()));
    module->SetCableEnvironmentTemperature(static_cast<EnvironmentTemperature>(*rc::gen::arbitrary<short>()));
    wstring specName = AnyText(40);
    module->SetCableSpecTypeName(specName);
    for (int left = *rc::gen::inRange(0, 30); left > 0; --left) {
        module->AddPipeSize({AnyFloat(), AnyFloat(), AnyFloat(), AnyFloat()});
        module->AddDuctSize({AnyFloat(), AnyFloat()});
        module->AddCableSpecification({AnyText(60), *rc::gen::arbitrary<std::int32_t>(),
                                       static_cast<EnvironmentTemperature>(*rc::gen::arbitrary<short>())});
    }
    if (*rc::gen::arbitrary<bool>())
        module->SetMaterial(Material(L"material", AnyText(40), Type::Duct, Discipline::HVAC, AnyTime()));
    return module;
}

bool IsOf(const IProjectSettingSizeModule& module, std::initializer_list<Type> types) {
    return std::find(types.begin(), types.end(), module.GetMEPType()) != types.end();
}

/// What the store keeps of a module: a new record, so that all it does not keep has its default.
SizeModulePtr Kept(const IProjectSettingSizeModule& module) {
    const Type type = module.GetMEPType();
    auto kept = SizeModule(module.GetId(), module.GetName(), type, module.GetDisciplineId(), module.GetCreateTime());
    if (type != Type::Pipe)
        kept->SetMEPType(type); // and with it the discipline
    if (type == Type::Pipe)
        kept->SetRoughness(module.GetRoughness());
    if (type == Type::Duct) {
        kept->SetPressureGrade(module.GetPressureGrade());
        kept->SetDuctShape(module.GetDuctShape());
    }
    if (type == Type::CableTray)
        kept->SetCableTrayShape(module.GetCableTrayShape());
    if (IsOf(module, {Type::Pipe, Type::Conduit}))
        for (const auto& size : module.GetPipeSizeList())
            kept->AddPipeSize(size);
    if (IsOf(module, {Type::Duct, Type::CableTray}))
        for (const auto& size : module.GetDuctSizeList())
            kept->AddDuctSize({size.size, type == Type::Duct ? size.thickness : 0.0F});
    return kept;
}

void KeepCableFields(const IProjectSettingSizeModule& module, IProjectSettingSizeModule& kept) {
    wstring specName = module.GetCableSpecTypeName();
    kept.SetCableSpecTypeName(specName);
    kept.SetCableMaterial(module.GetCableMaterial());
    kept.SetCableEnvironmentTemperature(module.GetCableEnvironmentTemperature());
    for (auto spec : module.GetCableSpecificationList()) {
        const std::string narrow = vorn::StringUtil::ToString(spec.area);
        spec.area = vorn::StringUtil::ToWString(vorn::StringUtil::CutUtf8(narrow, 49));
        kept.AddCableSpecification(spec);
    }
}

void CheckEqual(const IProjectSettingSizeModule& read, const IProjectSettingSizeModule& kept) {
    RC_ASSERT(read.GetId() == kept.GetId());
    RC_ASSERT(read.GetName() == kept.GetName());
    RC_ASSERT(read.GetMEPType() == kept.GetMEPType());
    RC_ASSERT(read.GetDisciplineId() == kept.GetDisciplineId());
    RC_ASSERT(read.GetCreateTime() == kept.GetCreateTime());
    RC_ASSERT(read.GetRoughness() == kept.GetRoughness());
    RC_ASSERT(read.GetPressureGrade() == kept.GetPressureGrade());
    RC_ASSERT(read.GetDuctShape() == kept.GetDuctShape());
    RC_ASSERT(read.GetCableTrayShape() == kept.GetCableTrayShape());
    RC_ASSERT(read.GetCableSpecTypeName() == kept.GetCableSpecTypeName());
    RC_ASSERT(read.GetCableMaterial() == kept.GetCableMaterial());
    RC_ASSERT(read.GetCableEnvironmentTemperature() == kept.GetCableEnvironmentTemperature());
    RC_ASSERT(read.GetPipeSizeList() == kept.GetPipeSizeList());
    RC_ASSERT(read.GetDuctSizeList() == kept.GetDuctSizeList());
    RC_ASSERT(read.GetCableSpecificationList() == kept.GetCableSpecificationList());
}

void CheckMaterial(const IProjectSettingSizeModule& read, const IProjectSettingSizeModule& written) {
    const IProjectSettingMaterial* before = IsOf(written, {Type::Pipe, Type::Duct}) ? written.GetMaterial() : nullptr;
    RC_ASSERT((read.GetMaterial() != nullptr) == (before != nullptr));
    if (before == nullptr)
        return;
    RC_ASSERT(read.GetMaterial()->GetId() == before->GetId());
    RC_ASSERT(read.GetMaterial()->GetName() == before->GetName());
    RC_ASSERT(read.GetMaterial()->GetMEPType() == before->GetMEPType());
    RC_ASSERT(read.GetMaterial()->GetDisciplineId() == before->GetDisciplineId());
    RC_ASSERT(read.GetMaterial()->GetCreateTime() == 0);
}

class RoundTrip : public StoreFixture {};

TEST_F(RoundTrip, OfAnySizeModuleLosesOnlyWhatTheStoreDoesNotKeep) {
    const bool holds = rc::check([this] {
        const auto module = AnyModule();
        CQbase::removeStore(path);
        RC_ASSERT(util.WriteSizeModule(path, ddq, module.get()));
        auto kept = Kept(*module);
        if (module->GetMEPType() == Type::Wire)
            KeepCableFields(*module, *kept);
        std::vector<SizeModulePtr> list;
        RC_ASSERT(util.ReadSizeModuleList(path, ddq, kept->GetMEPType(), kept->GetDisciplineId(), list));
        RC_ASSERT(list.size() == 1U);
        CheckEqual(*list[0], *kept);
        CheckMaterial(*list[0], *module);
    });
    EXPECT_TRUE(holds);
}

TEST_F(RoundTrip, OfAnyMaterialLosesNothing) {
    const bool holds = rc::check([this] {
        const auto id = L"m" + std::to_wstring(*rc::gen::inRange(0, 5));
        const auto material = Material(id, AnyText(60), static_cast<Type>(*rc::gen::inRange(1, 6)),
                                       static_cast<Discipline>(*rc::gen::inRange(1, 4)), AnyTime());
        RC_ASSERT(util.WriteMaterial(path, ddq, material.get()));
        MaterialPtr read;
        RC_ASSERT(util.ReadMaterial(path, ddq, id, read));
        RC_ASSERT(read->GetId() == id);
        RC_ASSERT(read->GetName() == material->GetName());
        RC_ASSERT(read->GetMEPType() == material->GetMEPType());
        RC_ASSERT(read->GetDisciplineId() == material->GetDisciplineId());
        RC_ASSERT(read->GetCreateTime() == material->GetCreateTime());
    });
    EXPECT_TRUE(holds);
}

} // namespace
