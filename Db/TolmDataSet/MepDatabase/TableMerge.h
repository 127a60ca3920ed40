#pragma once

#include "TolmDataSet/MepEnums.h"

#include <string>

class CQbase;

namespace web::json {
class value;
} // namespace web::json

/// The cloud's state of single tables, applied without a look at the local side: deletions before additions.
/// Exceptions of the JSON library pass through; what was applied until then stays.
namespace tolm {

/// A table of system types or of series, by class; nothing for any other class.
void DownloadTableData(const web::json::value& add, const web::json::value& del, CQbase* qb, const char* classCode,
                       wstring key, short mepType, short disciplineId);

/// A group of "ConfigTree" with materials and their size tables.
void DownloadPipeSizeTableData(const web::json::value& add, const web::json::value& del, CQbase* qb, wstring key,
                               short disciplineId);

/// Any other group of "ConfigTree". A duct size table goes with its material.
void DownloadSizeTableData(const web::json::value& add, const web::json::value& del, CQbase* qb, wstring key,
                           const char* classCode);

} // namespace tolm
