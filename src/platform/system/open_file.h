// A file that is held open for reading.
#pragma once

#include <filesystem>

namespace corvane {

/// A regular file, open for reading for as long as this lives.
///
/// The system ends every lock that this program holds on a file as soon as the program closes that
/// file anywhere. Who copies a database that is open and locked therefore keeps this until the
/// database is closed. Any thread.
class OpenFile {
 public:
  /// Throws FileError, also where `path` is a link or no regular file.
  explicit OpenFile(std::filesystem::path path);
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile();

  /// Copies what the file holds now to `to`, which is made, or emptied where it exists. What has
  /// been written when that fails is left there. Throws FileError.
  void copyTo(const std::filesystem::path& to) const;

 private:
  std::filesystem::path path_;
  int descriptor_;
};

}  // namespace corvane
