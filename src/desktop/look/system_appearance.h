// Whether the desktop is set to light or dark and to high contrast, and when the user changes it.
#pragma once

#include <QObject>
#include <functional>

#include "desktop/look/theme.h"

class QDBusVariant;
class QVariant;

namespace corvane::desktop {

/// Asks the desktop portal for the user's preferred colour scheme and contrast. Without a portal
/// the scheme is that of the palette that the platform started the program with.
class SystemAppearance : public QObject {
  Q_OBJECT

 public:
  /// To be made before a palette is applied. `changed` is told of each later change.
  explicit SystemAppearance(std::function<void(Appearance, Contrast)> changed);

  [[nodiscard]] Appearance appearance() const { return appearance_; }
  [[nodiscard]] Contrast contrast() const { return contrast_; }

 private slots:
  void settingChanged(const QString& scope, const QString& key, const QDBusVariant& value);

 private:  // NOLINT(readability-redundant-access-specifiers): those above are slots
  void take(const QString& key, const QVariant& value);

  std::function<void(Appearance, Contrast)> changed_;
  const Appearance ofPlatform_;
  Appearance appearance_;
  Contrast contrast_ = Contrast::normal;
};

}  // namespace corvane::desktop
