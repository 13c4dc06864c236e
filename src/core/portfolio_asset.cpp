#include "core/portfolio_asset.h"

#include "platform/text/locale.h"

namespace corvane {
