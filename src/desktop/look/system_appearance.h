// Whether the desktop is set to light or dark, and when the user changes it.
#pragma once

#include <QObject>
#include <functional>

#include "platform/text/styled/colour.h"

class QDBusVariant;

namespace corvane::desktop {

/// Asks the desktop portal for the user's preferred colour scheme, and without one takes that of
/// the palette that the platform started the program with.
class SystemAppearance : public QObject {
  Q_OBJECT

 public:
  /// To be made before a palette is applied. `changed` is told of each later change.
  explicit SystemAppearance(std::function<void(Appearance)> changed);

  [[nodiscard]] Appearance appearance() const { return appearance_; }

 private slots:
  void settingChanged(const QString& scope, const QString& key, const QDBusVariant& value);

 private:
  std::function<void(Appearance)> changed_;
  Appearance appearance_;
};

}  // namespace corvane::desktop
