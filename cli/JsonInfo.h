// The JSON description of a document that `sonmetra-cli info` prints.
#pragma once

#include <string>

#include "document/CKestruneDoc.h"

namespace sonmetra::cli {

std::string documentInfoJson(const CKestruneDoc& doc);

}  // namespace sonmetra::cli
