#include "core/decimal.h"
