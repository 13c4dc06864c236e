#include "desktop/look/system_appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>
#include <utility>

namespace corvane::desktop {
namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceScope = QStringLiteral("org.freedesktop.appearance");
const QString colourSchemeKey = QStringLiteral("color-scheme");
const QString contrastKey = QStringLiteral("contrast");
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

SystemAppearance::SystemAppearance(std::function<void(Appearance, Contrast)> changed)
    : changed_(std::move(changed)), ofPlatform_(ofPalette()), appearance_(ofPlatform_) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) {
    return;
  }
  for (const QString& key : {colourSchemeKey, contrastKey}) {
    auto question = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface,
                                                   QStringLiteral("Read"));
    question << appearanceScope << key;
    const QDBusMessage answer = bus.call(question, QDBus::Block, portalTimeoutMilliseconds);
    if (answer.type() != QDBusMessage::ReplyMessage) {
      // No portal, or an old one that knows nothing of contrast.
      break;
    }
    if (!answer.arguments().isEmpty()) {
      take(key, unwrapped(answer.arguments().constFirst()));
    }
  }
  bus.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
              SLOT(settingChanged(QString, QString, QDBusVariant)));
}

void SystemAppearance::take(const QString& key, const QVariant& value) {
  if (key == colourSchemeKey) {
    appearance_ = ofScheme(value, ofPlatform_);
  } else if (key == contrastKey) {
    // 1 for more contrast, anything else for no preference.
    contrast_ = value.toUInt() == 1 ? Contrast::high : Contrast::normal;
  }
}

void SystemAppearance::settingChanged(const QString& scope, const QString& key,
                                      const QDBusVariant& value) {
  if (scope != appearanceScope) {
    return;
  }
  const auto before = std::pair(appearance_, contrast_);
  take(key, unwrapped(value.variant()));
  if (before != std::pair(appearance_, contrast_)) {
    changed_(appearance_, contrast_);
  }
}

}  // namespace corvane::desktop
