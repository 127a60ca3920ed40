#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// Classes and attributes of the store under the numbers by which the library addresses them. The definition file
/// ProjectSettings.ddq says the same to the object database; a test holds the two together.
namespace tolm::schema {

// Class codes.
inline constexpr const char* kSystemType = "SYS";
inline constexpr const char* kConnectionSerie = "COS";
inline constexpr const char* kMaterial = "MTS";
inline constexpr const char* kSizeModule = "PSI";
inline constexpr const char* kMaterialSerie = "SMS";
inline constexpr const char* kMaterialSerieGroup = "MSG";
inline constexpr const char* kCircuitTemplate = "CRT";
inline constexpr const char* kBalancingMethod = "BMD";
inline constexpr const char* kInsulationSerie = "ISS";
inline constexpr const char* kSizingMethod = "PSM";
inline constexpr const char* kHeader = "000";

/// Id of the one record of the header class.
inline constexpr const char* kHeaderId = "FileHeader";

// Byte.
inline constexpr short kIsWarningNearRoot = 1005;
// Short.
inline constexpr short kMethodType = 1101;
inline constexpr short kKeepConnectTerminalSize = 1102;
inline constexpr short kUseStaticRegain = 1103;
inline constexpr short kMEPType = 1104;
inline constexpr short kConnectionType = 1105;
inline constexpr short kSystemClassification = 1106;
inline constexpr short kDuctShape = 1107;
inline constexpr short kCableTrayShape = 1108;
inline constexpr short kStatus = 1109;
inline constexpr short kJunctionType = 1110;
inline constexpr short kPhase = 1111;
inline constexpr short kConduitSizeDN = 1113;
inline constexpr short kIsApply = 1114;
inline constexpr short kPressureGrade = 1115;
inline constexpr short kCableMaterial = 1116;
inline constexpr short kCableEnvironmentTemperature = 1117;
inline constexpr short kThrottlingLimit2Min = 1170;
inline constexpr short kThrottlingLimit2Max = 1171;
inline constexpr short kThrottlingLimit1Min = 1172;
inline constexpr short kThrottlingLimit1Max = 1173;
inline constexpr short kInsulationType = 1180;
inline constexpr short kDisciplineId = 1181;
// Long.
inline constexpr short kLocalVersion = 1200;
// Float and float array.
inline constexpr short kMinSize = 1300;
inline constexpr short kMaxSize = 1301;
inline constexpr short kCableTraySizeList = 1302;
inline constexpr short kDev1DpMin = 1315;
inline constexpr short kDev2DpMin = 1316;
inline constexpr short kThermalConductivity = 1340;
inline constexpr short kMinWPerHRatio = 1369;
inline constexpr short kDev2DpMax = 1370;
inline constexpr short kDev1DpMax = 1371;
// Double.
inline constexpr short kRoughness = 1400;
inline constexpr short kCreateTime = 1401;
// Wide string and wide-string array.
inline constexpr short kDescription = 1501;
inline constexpr short kMaterialId = 1504;
inline constexpr short kSizeModuleId = 1506;
inline constexpr short kCableSpecTypeName = 1507; ///< of a size module
inline constexpr short kWireSpec = 1507;          ///< of a circuit template
inline constexpr short kSystemTypeId = 1509;
inline constexpr short kProtectionMaterial = 1510;
inline constexpr short kConduitTypeId = 1511;
inline constexpr short kWireTypeId = 1512;
inline constexpr short kSwitchComponentId1 = 1513;
inline constexpr short kSwitchComponentId2 = 1514;
inline constexpr short kSwitchComponentId3 = 1515;
inline constexpr short kSwitchComponentType1 = 1516;
inline constexpr short kSwitchComponentType2 = 1517;
inline constexpr short kSwitchComponentType3 = 1518;
inline constexpr short kWireCountStr = 1519;
inline constexpr short kSerieGroupId = 1520;
inline constexpr short kLayingMode = 1521;
inline constexpr short kCode = 1600;
inline constexpr short kName = 1601; ///< the description of an insulation series and of a sizing method
inline constexpr short kMaterialSerieIds = 1607;
inline constexpr short kConnectionSerieId = 1609;
inline constexpr short kCableSpecTypeIds = 1610;
// Binary array and binary.
inline constexpr short kFittingList = 1611;
inline constexpr short kCircularMaxSizes = 1612;
inline constexpr short kRectMaxSizes = 1613;
inline constexpr short kPipeSizeList = 1614;
inline constexpr short kDuctSizeList = 1615;
inline constexpr short kCableSpecificationList = 1616;
inline constexpr short kLastUpdateTimePoint = 1617;
inline constexpr short kDimensionMethods = 1621;

/// Most entries that a packed list can have.
inline constexpr std::size_t kPackedListCapacity = 300;

// Bytes of one entry of a packed list.
inline constexpr std::size_t kFittingEntrySize = 106;
inline constexpr std::size_t kCircularMaxSizeEntrySize = 4;
inline constexpr std::size_t kRectMaxSizeEntrySize = 6;
inline constexpr std::size_t kPipeSizeEntrySize = 16;
inline constexpr std::size_t kDuctSizeEntrySize = 8;
inline constexpr std::size_t kCableTraySizeEntrySize = 4;
inline constexpr std::size_t kCableSpecificationEntrySize = 56;
inline constexpr std::size_t kDimensionMethodEntrySize = 10;
/// Bytes of the time of the last update.
inline constexpr std::size_t kTimePointSize = 12;

/// One attribute of one class.
struct AttributeRow {
    const char* classCode;
    short id;
    std::string_view type; ///< as the definition file spells it
    std::string_view name;
};

/// Every attribute of every class.
inline constexpr auto kAttributes = std::to_array<AttributeRow>({
    {kSystemType, kName, "text", "Name"},
    {kSystemType, kCode, "text", "Code"},
    {kSystemType, kDescription, "text", "Description"},
    {kSystemType, kCreateTime, "double", "CreateTime"},
    {kSystemType, kSystemClassification, "short", "SystemClassification"},
    {kSystemType, kDisciplineId, "short", "DisciplineId"},
    {kSystemType, kMEPType, "short", "MEPType"},
    {kSystemType, kMaterialSerieIds, "text[]", "MaterialSerieIds"},
    {kSystemType, kCableSpecTypeIds, "text[]", "CableSpecTypeIds"},
    {kSystemType, kStatus, "short", "Status"},

    {kConnectionSerie, kName, "text", "Name"},
    {kConnectionSerie, kConnectionType, "short", "ConnectionType"},
    {kConnectionSerie, kMEPType, "short", "MEPType"},
    {kConnectionSerie, kFittingList, "binary(106)[]", "FittingList"},

    {kMaterial, kName, "text", "Name"},
    {kMaterial, kMEPType, "short", "MEPType"},
    {kMaterial, kDisciplineId, "short", "DisciplineId"},
    {kMaterial, kCreateTime, "double", "CreateTime"},
    {kMaterial, kStatus, "short", "Status"},

    {kSizeModule, kMEPType, "short", "MEPType"},
    {kSizeModule, kName, "text", "Name"},
    {kSizeModule, kCreateTime, "double", "CreateTime"},
    {kSizeModule, kDisciplineId, "short", "DisciplineId"},
    {kSizeModule, kRoughness, "double", "roughness"},
    {kSizeModule, kPipeSizeList, "binary(16)[]", "PipeSizeList"},
    {kSizeModule, kPressureGrade, "short", "PressureGrade"},
    {kSizeModule, kDuctShape, "short", "DuctShape"},
    {kSizeModule, kDuctSizeList, "binary(8)[]", "DuctSizeList"},
    {kSizeModule, kCableTrayShape, "short", "CableTrayShape"},
    {kSizeModule, kCableTraySizeList, "float[]", "CableTraySizeList"},
    {kSizeModule, kCableSpecTypeName, "text", "CableSpecTypeName"},
    {kSizeModule, kCableEnvironmentTemperature, "short", "CableEnvironmentTemperature"},
    {kSizeModule, kCableMaterial, "short", "CableMaterial"},
    {kSizeModule, kCableSpecificationList, "binary(56)[]", "CableSpecificationList"},
    {kSizeModule, kMaterialId, "text", "MaterialId"},
    {kSizeModule, kStatus, "short", "Status"},

    {kMaterialSerie, kName, "text", "Name"},
    {kMaterialSerie, kMinSize, "float", "minSize"},
    {kMaterialSerie, kMaxSize, "float", "maxSize"},
    {kMaterialSerie, kMEPType, "short", "MEPType"},
    {kMaterialSerie, kDisciplineId, "short", "DisciplineId"},
    {kMaterialSerie, kCreateTime, "double", "CreateTime"},
    {kMaterialSerie, kJunctionType, "short", "JunctionType"},
    {kMaterialSerie, kSizeModuleId, "text", "SizeModuleId"},
    {kMaterialSerie, kConnectionSerieId, "text", "ConnectionSerieId"},
    {kMaterialSerie, kSerieGroupId, "text", "SerieGroupId"},
    {kMaterialSerie, kStatus, "short", "Status"},

    {kMaterialSerieGroup, kName, "text", "Name"},
    {kMaterialSerieGroup, kMEPType, "short", "MEPType"},
    {kMaterialSerieGroup, kDisciplineId, "short", "DisciplineId"},
    {kMaterialSerieGroup, kCreateTime, "double", "CreateTime"},
    {kMaterialSerieGroup, kStatus, "short", "Status"},

    {kCircuitTemplate, kSystemClassification, "short", "SystemClassification"},
    {kCircuitTemplate, kSystemTypeId, "text", "SystemTypeId"},
    {kCircuitTemplate, kSwitchComponentId1, "text", "SwitchComponentId1"},
    {kCircuitTemplate, kSwitchComponentId2, "text", "SwitchComponentId2"},
    {kCircuitTemplate, kSwitchComponentId3, "text", "SwitchComponentId3"},
    {kCircuitTemplate, kSwitchComponentType1, "text", "SwitchComponentType1"},
    {kCircuitTemplate, kSwitchComponentType2, "text", "SwitchComponentType2"},
    {kCircuitTemplate, kSwitchComponentType3, "text", "SwitchComponentType3"},
    {kCircuitTemplate, kPhase, "short", "Phase"},
    {kCircuitTemplate, kProtectionMaterial, "text", "ProtectionMaterial"},
    {kCircuitTemplate, kWireTypeId, "text", "WireTypeId"},
    {kCircuitTemplate, kWireSpec, "text", "WireSpec"},
    {kCircuitTemplate, kWireCountStr, "text", "WireCountStr"},
    {kCircuitTemplate, kConduitTypeId, "text", "ConduitTypeId"},
    {kCircuitTemplate, kConduitSizeDN, "short", "ConduitSizeDN"},
    {kCircuitTemplate, kIsApply, "short", "IsApply"},
    {kCircuitTemplate, kLayingMode, "text", "LayingMode"},

    {kBalancingMethod, kName, "text", "Name"},
    {kBalancingMethod, kDescription, "text", "Description"},
    {kBalancingMethod, kIsWarningNearRoot, "byte", "IsWarningNearRoot"},
    {kBalancingMethod, kDev1DpMin, "float", "Dev1DpMin"},
    {kBalancingMethod, kDev1DpMax, "float", "Dev1DpMax"},
    {kBalancingMethod, kDev2DpMin, "float", "Dev2DpMin"},
    {kBalancingMethod, kDev2DpMax, "float", "Dev2DpMax"},
    {kBalancingMethod, kThrottlingLimit1Min, "short", "ThrottlingLimit1Min"},
    {kBalancingMethod, kThrottlingLimit1Max, "short", "ThrottlingLimit1Max"},
    {kBalancingMethod, kThrottlingLimit2Min, "short", "ThrottlingLimit2Min"},
    {kBalancingMethod, kThrottlingLimit2Max, "short", "ThrottlingLimit2Max"},
    {kBalancingMethod, kDisciplineId, "short", "DisciplineId"},

    {kInsulationSerie, kCode, "text", "Code"},
    {kInsulationSerie, kName, "text", "Name"},
    {kInsulationSerie, kInsulationType, "short", "InsulationType"},
    {kInsulationSerie, kDisciplineId, "short", "DisciplineId"},
    {kInsulationSerie, kThermalConductivity, "float", "ThermalConductivity"},
    {kInsulationSerie, kCircularMaxSizes, "binary(4)[]", "CircularMaxSizes"},
    {kInsulationSerie, kRectMaxSizes, "binary(6)[]", "RectMaxSizes"},

    {kSizingMethod, kCode, "text", "Code"},
    {kSizingMethod, kName, "text", "Name"},
    {kSizingMethod, kKeepConnectTerminalSize, "short", "KeepConnectTerminalSize"},
    {kSizingMethod, kMethodType, "short", "MethodType"},
    {kSizingMethod, kUseStaticRegain, "short", "UseStaticRegain"},
    {kSizingMethod, kMinWPerHRatio, "float", "MinWPerHRatio"},
    {kSizingMethod, kDimensionMethods, "binary(10)[]", "DimensionMethods"},

    {kHeader, kLocalVersion, "long", "LocalVersion"},
    {kHeader, kLastUpdateTimePoint, "binary(12)", "LastUpdateTimePoint"},
});

} // namespace tolm::schema
