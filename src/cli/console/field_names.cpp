#include "cli/console/field_names.h"

#include <algorithm>

#include "cli/console/command_line.h"

namespace corvane::cli {

std::vector<std::string> fieldNames(std::string_view list,
                                    const std::vector<std::string>& allFields) {
  std::vector<std::string> names;
  while (true) {
    const std::size_t comma = list.find(',');
    std::string name(list.substr(0, comma));
    if (!name.empty() && std::ranges::find(allFields, name) == allFields.end()) {
      std::string known;
      for (const std::string& field : allFields) {
        known += (known.empty() ? "" : ", ") + field;
      }
      throw UsageError("There is no field “" + name + "”. The fields are " + known + ".");
    }
    if (!name.empty() && std::ranges::find(names, name) != names.end()) {
      throw UsageError("The field “" + name + "” stands in two columns.");
    }
    names.push_back(std::move(name));
    if (comma == list.npos) {
      return names;
    }
    list.remove_prefix(comma + 1);
  }
}

}  // namespace corvane::cli
