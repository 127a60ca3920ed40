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
        wstring dataset; ///< the store's own path
    };

    /// Lost units are reported in the name of `site`. `progress` and `recoverInfo` may be null.
    CloudRefresh(CallSite site, CQbase* qb, vorn::IProgressReporter* progress, Paths paths,
                 RecoverDataInfo* recoverInfo);

    /// What the increment leads on from: a version, 0 for a full load, which has nothing to delete; and the store's
    /// content when that version was read.
    struct Base {
        int version = 0;
        long content = 0;
    };
    enum class Applied {
        Yes,     ///< in one transaction, which is still open
        Nothing, ///< there was nothing to apply
        Failed,  ///< there was no transaction to be had, which is reported
        Changed  ///< somebody else changed the store meanwhile; nothing was applied
    };
    /// The increment is used up.
    Applied Apply(web::json::value& increment, const Base& base);

    void Report(double percentage);

private:
    bool IsStill(long content) const;
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
