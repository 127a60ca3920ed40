#pragma once

#include "MepDatabase/CallSite.h"
#include "TolmDataSet/MepEnums.h"
#include "TolmDataSet/SmallRecords.h"
#include "Vorn/Progress.h"

#include <cpprest/json.h>

class CQbase;

namespace tolm {

class MepQbaseUtil;
struct CloudTableRow;

/// Applies one increment of the cloud to an open store: deletions first, additions second, then the system types
/// that the host wants back. An exception that spoils a unit of work is reported and the next unit follows; any
/// other one passes through, and what was applied until then stays.
class CloudRefresh {
public:
    /// Where the parts of an increment go that are no records of the store, and how the store is opened.
    struct Paths {
        wstring definition;
        wstring combinedProducts;
        wstring binaryFolder;
    };

    /// Lost units are reported in the name of `site`. `progress` and `recoverInfo` may be null.
    CloudRefresh(CallSite site, CQbase* qb, vorn::IProgressReporter* progress, Paths paths,
                 RecoverDataInfo* recoverInfo);

    /// True when something was applied, in one transaction that is still open. `localVersion` is the one from which
    /// the increment leads on; from 0 it is a full load, which has nothing to delete. The increment is used up.
    bool Apply(web::json::value& increment, int localVersion);

    void Report(double percentage);

private:
    void Delete(const web::json::object& del);
    void Add(web::json::object& add);
    void AddConfigTree(web::json::object& add);
    void AddConfigTreeItem(web::json::value& element);
    void AddSystemTypes(web::json::object& add, const CloudTableRow& table);
    void AddSeries(web::json::object& add, const CloudTableRow& table);
    void Advance();

    CallSite m_site;
    CQbase* m_qb;
    vorn::IProgressReporter* m_progress;
    Paths m_paths;
    RecoverDataInfo* m_recoverInfo;
    MepQbaseUtil& m_store;
    double m_percentage = 0;
};

} // namespace tolm
