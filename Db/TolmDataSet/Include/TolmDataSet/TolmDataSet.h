#pragma once

/// Everything that a host needs.
#include "TolmDataSet/AddinEntry.h"
#include "TolmDataSet/Base64.h"
#include "TolmDataSet/ITolmDataSetFactory.h"
#include "TolmDataSet/TolmBaseDesignData.h"
