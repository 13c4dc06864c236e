// Where panels of files begin.
#pragma once

#include <QDir>
#include <QStandardPaths>
#include <QString>

namespace corvane::desktop {

/// The user's folder of documents; his home where there is none, which a panel could not enter.
[[nodiscard]] inline QString documentsFolder() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  return QDir(folder).exists() ? folder : QDir::homePath();
}

}  // namespace corvane::desktop
