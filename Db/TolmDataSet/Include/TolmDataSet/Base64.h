#pragma once

#include "TolmDataSet/TolmDataSetExport.h"

#include <string>

/// The bytes in base64 (RFC 4648), padded.
TOLM_DATASET_API std::string base64_encode(const unsigned char* bytes, unsigned int count);

/// The bytes of a base64 text, up to the first character that does not belong to the alphabet.
TOLM_DATASET_API std::string base64_decode(const std::string& text);
