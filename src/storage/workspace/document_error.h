// Why a document could not be opened or saved, beyond what its files say.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/error.h"

namespace corvane {

/// The cases of DocumentError.
struct DocumentErrorCases {
  /// The document cannot be kept as a file of this type.
  struct UnsupportedType {
    static constexpr std::string_view domain = "NSOSStatusErrorDomain";
    static constexpr int code = -4;
    std::string type;
    friend bool operator==(const UnsupportedType&, const UnsupportedType&) = default;
  };
  /// Somebody else has changed the file since it was opened or saved here.
  struct ChangedElsewhere {
    std::filesystem::path path;
    friend bool operator==(const ChangedElsewhere&, const ChangedElsewhere&) = default;
  };
  /// Something else stands already where the document was to be saved.
  struct AlreadyExists {
    std::filesystem::path path;
    friend bool operator==(const AlreadyExists&, const AlreadyExists&) = default;
  };
  /// The place is that of another document that is open.
  struct OpenElsewhere {
    std::filesystem::path path;
    friend bool operator==(const OpenElsewhere&, const OpenElsewhere&) = default;
  };
  /// The files of a workspace hold what cannot be read.
  struct Unreadable {
    std::filesystem::path path;
    /// Where in it and why: "portfolio “Savings”: unknown currency 12345".
    std::string reason;
    friend bool operator==(const Unreadable&, const Unreadable&) = default;
  };
  /// What a document works with has been damaged since, or was when it was opened.
  struct Damaged {
    std::filesystem::path path;
    std::string reason;
    friend bool operator==(const Damaged&, const Damaged&) = default;
  };
  /// Reading the document has failed, so there is nothing that could be saved.
  struct NothingLoaded {
    friend bool operator==(NothingLoaded, NothingLoaded) = default;
  };
  using Case = std::variant<UnsupportedType, ChangedElsewhere, AlreadyExists, OpenElsewhere,
                            Unreadable, Damaged, NothingLoaded>;
};

class DocumentError : public VariantError<DocumentError, DocumentErrorCases> {
 public:
  using VariantError::VariantError;

  /// Whether the user may decide to save all the same.
  [[nodiscard]] bool isAboutReplacing() const {
    return std::holds_alternative<ChangedElsewhere>(which()) ||
           std::holds_alternative<AlreadyExists>(which());
  }
  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] std::optional<std::string> recoverySuggestion() const override;
};

}  // namespace corvane
