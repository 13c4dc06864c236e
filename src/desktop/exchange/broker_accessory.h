// The controls for a broker's own settings, beside its list of fields.
#pragma once

#include <memory>

#include "exchange/brokers/import_export_broker.h"

class QWidget;

namespace corvane::desktop {

/// The widgets for `controller`, which they hold. Null for one of a class that has none, and for
/// null.
[[nodiscard]] QWidget* makeAccessory(
    const std::shared_ptr<AccessoryConfigurationViewController>& controller);

}  // namespace corvane::desktop
