// The fields of the error that chart and quote answers share.
#pragma once

#include "marketdata/yahoo/wire/wire_fields.h"
#include "marketdata/yahoo/wire/yahoo_finance_api.h"

namespace corvane::wire {

template <>
inline constexpr std::tuple fieldsOf<YahooFinanceAPI::ErrorDescription>{
    field("code", &YahooFinanceAPI::ErrorDescription::code),
    field("description", &YahooFinanceAPI::ErrorDescription::description),
};

}  // namespace corvane::wire
