#include "desktop/look/system_appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>

namespace corvane::desktop {
namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceScope = QStringLiteral("org.freedesktop.appearance");
const QString colourSchemeKey = QStringLiteral("color-scheme");
constexpr int portalTimeoutMilliseconds = 500;

Appearance ofPalette() {
  return QGuiApplication::palette().color(QPalette::Window).lightness() < 128 ? Appearance::dark
                                                                              : Appearance::light;
}

/// The portal's answer: 1 for dark, 2 for light, anything else for no preference.
Appearance ofScheme(const QVariant& scheme, Appearance otherwise) {
  const uint value = scheme.toUInt();
  return value == 1 ? Appearance::dark : value == 2 ? Appearance::light : otherwise;
}

/// Portals of different age wrap the value once or twice.
QVariant unwrapped(QVariant value) {
  while (value.canConvert<QDBusVariant>()) {
    value = value.value<QDBusVariant>().variant();
  }
  return value;
}

}  // namespace

SystemAppearance::SystemAppearance(std::function<void(Appearance)> changed)
    : changed_(std::move(changed)), appearance_(ofPalette()) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) {
    return;
  }
  auto question = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface,
                                                 QStringLiteral("Read"));
  question << appearanceScope << colourSchemeKey;
  const QDBusMessage answer = bus.call(question, QDBus::Block, portalTimeoutMilliseconds);
  if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty()) {
    appearance_ = ofScheme(unwrapped(answer.arguments().constFirst()), appearance_);
  }
  bus.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
              SLOT(settingChanged(QString, QString, QDBusVariant)));
}

void SystemAppearance::settingChanged(const QString& scope, const QString& key,
                                      const QDBusVariant& value) {
  if (scope != appearanceScope || key != colourSchemeKey) {
    return;
  }
  const Appearance now = ofScheme(unwrapped(value.variant()), Appearance::light);
  if (now != appearance_) {
    appearance_ = now;
    changed_(now);
  }
}

}  // namespace corvane::desktop
