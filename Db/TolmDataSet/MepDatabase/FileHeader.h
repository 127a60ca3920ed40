#pragma once

#include "TolmDataSet/MepEnums.h"

class CQbase;

/// The header of a dataset file: the one record that says which version of the cloud's dataset the file holds and
/// when it was last updated. No filter of an earlier step hides it: all filters are reset.
namespace tolm {

/// Makes the header the current record. False when the file has none.
bool FetchHeader(CQbase& qb);
/// The same, the header created where the file has none.
bool FetchOrCreateHeader(CQbase& qb);

/// Puts the version into the header. True when it is saved.
bool StampVersion(CQbase& qb, int version);
/// Puts the present time into the header and returns it in the form "%Y/%m/%d %T"; empty when it is not saved.
wstring StampTimePoint(CQbase& qb);

} // namespace tolm
