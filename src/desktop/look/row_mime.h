// Places of rows on their way through a drag.
#pragma once

#include <QMimeData>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <vector>

namespace corvane::desktop {

/// `rows` as what is dragged under `type`.
[[nodiscard]] inline QMimeData* mimeDataOfRows(const QString& type, std::vector<std::size_t> rows) {
  std::ranges::sort(rows);
  QStringList places;
  for (const std::size_t row : rows) {
    places.append(QString::number(row));
  }
  auto* data = new QMimeData;
  data->setData(type, places.join(QLatin1Char(' ')).toLatin1());
  return data;
}

[[nodiscard]] inline std::vector<std::size_t> rowsOfMimeData(const QString& type,
                                                             const QMimeData& data) {
  std::vector<std::size_t> rows;
  for (const QString& place :
       QString::fromLatin1(data.data(type)).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
    rows.push_back(place.toULong());
  }
  return rows;
}

}  // namespace corvane::desktop
