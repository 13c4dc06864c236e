// A file system for the database engine that fails when it is told to.
#pragma once

namespace corvane::testing {

/// While one lives, it is the engine's file system: databases opened then fail at the chosen write,
/// truncation or confirmation to disk and at all that follow, until it is mended. One at a time, on
/// one thread.
class FailingFileSystem {
 public:
  FailingFileSystem();
  FailingFileSystem(const FailingFileSystem&) = delete;
  FailingFileSystem& operator=(const FailingFileSystem&) = delete;
  ~FailingFileSystem();

  /// Lets `count` operations pass and refuses the next ones.
  void failAfter(int count);
  void mend();
  /// Whether an operation has been refused since failAfter().
  [[nodiscard]] bool hasFailed() const;
  /// How often this thread has waited until what the engine wrote was on the disk.
  [[nodiscard]] int confirmationCount() const;
};

}  // namespace corvane::testing
