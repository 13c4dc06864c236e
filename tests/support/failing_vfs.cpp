#include "support/failing_vfs.h"

#include <sqlite3.h>

#include <cassert>
#include <cstddef>
#include <limits>

namespace corvane::testing {
namespace {

constexpr int never = std::numeric_limits<int>::max();

int operationsLeft = never;
bool failed = false;
thread_local int confirmations = 0;

bool refusesNext() {
  if (operationsLeft == never) {
    return false;
  }
  if (operationsLeft > 0) {
    --operationsLeft;
    return false;
  }
  failed = true;
  return true;
}

/// An open file: the engine's own one stands behind it in the same block of memory.
struct File : sqlite3_file {
  sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* real(sqlite3_file* file) {
  return static_cast<File*>(file)->real();
}

// Operations on shared memory are passed on and never fail.
const sqlite3_io_methods methods = [] {
  sqlite3_io_methods made = {};
  made.iVersion = 2;
  made.xClose = [](sqlite3_file* file) { return real(file)->pMethods->xClose(real(file)); };
  made.xRead = [](sqlite3_file* file, void* bytes, int count, sqlite3_int64 at) {
    return real(file)->pMethods->xRead(real(file), bytes, count, at);
  };
  made.xWrite = [](sqlite3_file* file, const void* bytes, int count, sqlite3_int64 at) {
    return refusesNext() ? SQLITE_IOERR_WRITE
                         : real(file)->pMethods->xWrite(real(file), bytes, count, at);
  };
  made.xTruncate = [](sqlite3_file* file, sqlite3_int64 size) {
    return refusesNext() ? SQLITE_IOERR_TRUNCATE
                         : real(file)->pMethods->xTruncate(real(file), size);
  };
  made.xSync = [](sqlite3_file* file, int flags) {
    ++confirmations;
    return refusesNext() ? SQLITE_IOERR_FSYNC : real(file)->pMethods->xSync(real(file), flags);
  };
  made.xFileSize = [](sqlite3_file* file, sqlite3_int64* size) {
    return real(file)->pMethods->xFileSize(real(file), size);
  };
  made.xLock = [](sqlite3_file* file, int lock) {
    return real(file)->pMethods->xLock(real(file), lock);
  };
  made.xUnlock = [](sqlite3_file* file, int lock) {
    return real(file)->pMethods->xUnlock(real(file), lock);
  };
  made.xCheckReservedLock = [](sqlite3_file* file, int* isReserved) {
    return real(file)->pMethods->xCheckReservedLock(real(file), isReserved);
  };
  made.xFileControl = [](sqlite3_file* file, int operation, void* argument) {
    return real(file)->pMethods->xFileControl(real(file), operation, argument);
  };
  made.xSectorSize = [](sqlite3_file* file) {
    return real(file)->pMethods->xSectorSize(real(file));
  };
  made.xDeviceCharacteristics = [](sqlite3_file* file) {
    return real(file)->pMethods->xDeviceCharacteristics(real(file));
  };
  made.xShmMap = [](sqlite3_file* file, int region, int size, int mayExtend,
                    void volatile** memory) {
    return real(file)->pMethods->xShmMap(real(file), region, size, mayExtend, memory);
  };
  made.xShmLock = [](sqlite3_file* file, int offset, int count, int flags) {
    return real(file)->pMethods->xShmLock(real(file), offset, count, flags);
  };
  made.xShmBarrier = [](sqlite3_file* file) { real(file)->pMethods->xShmBarrier(real(file)); };
  made.xShmUnmap = [](sqlite3_file* file, int mayDelete) {
    return real(file)->pMethods->xShmUnmap(real(file), mayDelete);
  };
  return made;
}();

sqlite3_vfs* standard = nullptr;
sqlite3_vfs failing;

int openFile(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags,
             int* flagsFound) {
  const int result = standard->xOpen(standard, name, real(file), flags, flagsFound);
  file->pMethods = result == SQLITE_OK ? &methods : nullptr;
  return result;
}

}  // namespace

FailingFileSystem::FailingFileSystem() {
  standard = sqlite3_vfs_find(nullptr);
  failing = *standard;
  failing.zName = "failing";
  failing.szOsFile = static_cast<int>(sizeof(File)) + standard->szOsFile;
  failing.xOpen = openFile;
  sqlite3_vfs_register(&failing, /*makeDflt=*/1);
  mend();
}

FailingFileSystem::~FailingFileSystem() {
  sqlite3_vfs_register(standard, /*makeDflt=*/1);
  sqlite3_vfs_unregister(&failing);
}

void FailingFileSystem::failAfter(int count) {
  operationsLeft = count;
  failed = false;
}

void FailingFileSystem::mend() {
  operationsLeft = never;
}

int FailingFileSystem::confirmationCount() const {
  return confirmations;
}

bool FailingFileSystem::hasFailed() const {
  return failed;
}

}  // namespace corvane::testing
