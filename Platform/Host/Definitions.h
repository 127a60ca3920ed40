#pragma once

#include "Host/HostTypes.h"
#include "Vorn/Export.h"

#include <map>
#include <string>

namespace tolm {

/// Display names of the connector types; a host may replace the list before it uses the library.
struct TOLM_PLATFORM_API MEPConnectorTypeDefinition {
    static std::map<MEPConnectorType, std::wstring> ConnectorTypeNameList;
};

/// System classifications of each discipline.
class TOLM_PLATFORM_API MEPSystemClassificationDefinition {
public:
    /// The classes of the discipline with their names; an empty map for a discipline that is not known.
    static const std::map<MEPSystemClassification, std::wstring>&
    GetAvailableSystemClassificationList(MEPDisciplineId discipline);
    static void SetSystemClassificationList(MEPDisciplineId discipline,
                                            std::map<MEPSystemClassification, std::wstring> classes);
};

struct TOLM_PLATFORM_API DataSetFilePath {
    /// Path of the definition file of the store. By default the one beside the installed library, or that of the
    /// source tree for a library that runs from its build tree.
    static std::wstring TOLMDDQFilePath;
};

} // namespace tolm
