#include "storage/workspace/document_error.h"

#include "platform/overloaded.h"

namespace corvane {
namespace {

std::string nameOf(const std::filesystem::path& path) {
  return "“" + path.filename().string() + "”";
}

}  // namespace

std::optional<std::string> DocumentError::description() const {
  return std::visit(
      Overloaded{
          [](const UnsupportedType& unsupported) {
            return unsupported.type.empty()
                       ? std::string("Only workspaces can be opened and saved.")
                       : "Documents of the type “" + unsupported.type +
                             "” can be neither opened nor saved.";
          },
          [](const ChangedElsewhere& changed) {
            return nameOf(changed.path) +
                   " has been changed by another program since it was opened or saved here.";
          },
          [](const AlreadyExists& existing) { return nameOf(existing.path) + " already exists."; },
          [](const OpenElsewhere& open) { return nameOf(open.path) + " is open itself."; },
          [](const Unreadable& unreadable) {
            return nameOf(unreadable.path) + " cannot be opened: " + unreadable.reason;
          },
          [](const Damaged& damaged) {
            return nameOf(damaged.path) + " is damaged: " + damaged.reason;
          },
          [](NothingLoaded) {
            return std::string("The workspace could not be read, so there is nothing to save.");
          }},
      which());
}

std::optional<std::string> DocumentError::recoverySuggestion() const {
  if (std::holds_alternative<ChangedElsewhere>(which())) {
    return "Saving loses those changes. Save under another name to keep both.";
  }
  if (std::holds_alternative<AlreadyExists>(which())) {
    return "Saving replaces what is there.";
  }
  if (std::holds_alternative<Unreadable>(which())) {
    return "The file has been left as it is.";
  }
  if (std::holds_alternative<Damaged>(which())) {
    return "The file has been left as it is. Go back to a copy of the workspace.";
  }
  if (std::holds_alternative<OpenElsewhere>(which())) {
    return "Close it first, or save under another name.";
  }
  return std::nullopt;
}

}  // namespace corvane
