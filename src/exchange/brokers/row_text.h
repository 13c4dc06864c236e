// One line of a delimited text file, as the program writes it.
#pragma once

#include <string>
#include <vector>

#include "exchange/brokers/import_export_configuration.h"

namespace corvane {

/// The cells in double quotes, each double quote in them doubled, joined by the delimiter and ended
/// by CR LF. Numbers and empty cells are quoted too.
[[nodiscard]] std::string rowText(const std::vector<std::string>& cells,
                                  ImportExportFieldDelimiter delimiter);

}  // namespace corvane
