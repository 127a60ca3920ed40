#include "MepDataSetInterface/TolmProjectSettingCircuitTemplate.h"

#include "MepDataSetInterface/RecordBasics.h"

namespace tolm {
namespace {

constexpr int kSwitchPositions = 3;

bool IsPosition(int position) {
    return position >= 0 && position < kSwitchPositions;
}

wstring TextAt(const std::vector<wstring>& texts, int position) {
    return IsPosition(position) ? texts[static_cast<std::size_t>(position)] : wstring();
}

void SetTextAt(std::vector<wstring>& texts, int position, wstring text) {
    if (IsPosition(position))
        texts[static_cast<std::size_t>(position)] = std::move(text);
}

} // namespace

ITolmProjectSettingCircuitTemplate::~ITolmProjectSettingCircuitTemplate() = default;

vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> ITolmProjectSettingCircuitTemplate::Create() {
    return TolmProjectSettingCircuitTemplate::Create();
}

vorn::OwnerPtr<ITolmProjectSettingCircuitTemplate> TolmProjectSettingCircuitTemplate::Create() {
    return ObjectMaker::Create<ITolmProjectSettingCircuitTemplate, TolmProjectSettingCircuitTemplate>();
}

TolmProjectSettingCircuitTemplate::TolmProjectSettingCircuitTemplate()
    : m_id(NewRecordId()), m_switchComponentTypeIds(kSwitchPositions), m_switchComponentIds(kSwitchPositions),
      m_switchComponentTypeNames(kSwitchPositions) {}

TolmProjectSettingCircuitTemplate::~TolmProjectSettingCircuitTemplate() = default;

wstring TolmProjectSettingCircuitTemplate::GetSwitchComponentTypeId(int position) const {
    return TextAt(m_switchComponentTypeIds, position);
}

void TolmProjectSettingCircuitTemplate::SetSwitchComponentTypeId(int position, wstring id) {
    SetTextAt(m_switchComponentTypeIds, position, std::move(id));
}

wstring TolmProjectSettingCircuitTemplate::GetSwitchComponentId(int position) const {
    return TextAt(m_switchComponentIds, position);
}

void TolmProjectSettingCircuitTemplate::SetSwitchComponentId(int position, wstring id) {
    SetTextAt(m_switchComponentIds, position, std::move(id));
}

wstring TolmProjectSettingCircuitTemplate::GetSwitchComponentTypeName(int position) const {
    return TextAt(m_switchComponentTypeNames, position);
}

void TolmProjectSettingCircuitTemplate::SetSwitchComponentTypeName(int position, wstring name) {
    SetTextAt(m_switchComponentTypeNames, position, std::move(name));
}

} // namespace tolm
