#include "samplemarket/prices/instruments.h"

#include <algorithm>

#include "samplemarket/prices/currency_rates.h"

namespace corvane::samplemarket {

namespace {

using enum ExchangeID;
constexpr auto stock = InstrumentKind::stock;
constexpr auto fund = InstrumentKind::fund;
constexpr auto index = InstrumentKind::index;

constexpr std::string_view pairSuffix = "=X";

std::vector<Instrument> makeListedInstruments() {
  // Of a character: first price, growth, deviation, market, dividend, dividends a year, first year.
  // clang-format off
  return {
      {"CASTR", "Castrelle Networks Inc.", stock, newYork, "USD", 2,
       {2400, 90, 15000, 120, 0, 0}, 210000, "Technology"},
      {"HOLVK", "Holverk Industries Inc.", stock, newYork, "USD", 2,
       {4150, 70, 11000, 100, 24, 4}, 480000, "Industrials"},
      {"NIMBR", "Nimbria Software Inc.", stock, newYork, "USD", 2,
       {1850, 130, 17000, 130, 6, 4}, 350000, "Technology"},
      {"OAKWN", "Oakwyn Foods Company", stock, newYork, "USD", 2,
       {3320, 55, 8000, 60, 31, 4}, 620000, "Consumer Defensive"},
      {"PELLR", "Pellarin Health Group", stock, newYork, "USD", 2,
       {2875, 85, 11000, 80, 16, 4}, 390000, "Healthcare"},
      {"QUARO", "Quarossa Semiconductors Inc.", stock, newYork, "USD", 2,
       {1600, 160, 20000, 140, 4, 4, 2004}, 800000, "Technology"},
      {"VESTM", "Vestmere Bancorp", stock, newYork, "USD", 2,
       {3740, 50, 13000, 110, 33, 4}, 910000, "Financial Services"},
      {"ALLUS", "Corrin Total America Fund", fund, newYork, "USD", 2,
       {5000, 75, 1500, 100, 17, 4, 2001}, 500000, ""},
      {"BNDUS", "Corrin Bond Income Fund", fund, newYork, "USD", 2,
       {10000, 2, 2500, 0, 36, 12, 2003}, 300000, ""},
      {"^CNY100", "New York Hundred", index, newYork, "USD", 2, {35000, 75, 800, 100, 0, 0}},
      {"BOREA.TO", "Borealind Railway Company", stock, toronto, "CAD", 2,
       {2610, 95, 10000, 90, 18, 4}, 270000, "Industrials"},
      {"MAPRK.TO", "Maplerock Energy Ltd.", stock, toronto, "CAD", 2,
       {1475, 60, 18000, 110, 29, 4}, 540000, "Energy"},
      {"TAMRK.TO", "Tamrack Financial Group", stock, toronto, "CAD", 2,
       {3080, 65, 9000, 100, 39, 4}, 450000, "Financial Services"},
      {"LAURV.TO", "Laurenveil Pipelines Inc.", stock, toronto, "CAD", 2,
       {2225, 45, 9000, 70, 56, 4}, 330000, "Energy"},
      {"KEEWA.TO", "Keewana Gold Mines Ltd.", stock, toronto, "CAD", 2,
       {640, 50, 25000, 40, 7, 2, 1996}, 190000, "Basic Materials"},
      {"ALLCA.TO", "Corrin Canadian Equity Fund", fund, toronto, "CAD", 2,
       {2000, 60, 1500, 100, 28, 4, 2002}, 220000, ""},
      {"CWRLD.TO", "Corrin World Equity Fund", fund, toronto, "CAD", 2,
       {2000, 80, 6000, 50, 16, 4, 2006}, 260000, ""},
      {"^CTO60", "Toronto Sixty", index, toronto, "CAD", 2, {20000, 60, 800, 100, 0, 0}},
      {"THRAL.L", "Thrale &amp; Mossop plc", stock, london, "GBP", 3,
       {8420, 60, 12000, 90, 30, 2}, 150000, "Consumer Cyclical"},
      {"PENWY.L", "Penwyth Utilities plc", stock, london, "GBP", 3,
       {6150, 40, 8000, 60, 48, 2}, 240000, "Utilities"},
      {"SKERR.L", "Skerrow Mining plc", stock, london, "GBP", 3,
       {11300, 70, 19000, 120, 35, 2}, 170000, "Basic Materials"},
      {"DUNVL.L", "Dunvale Stores plc", stock, london, "GBp", 1,
       {2315, 45, 13000, 90, 34, 2}, 420000, "Consumer Defensive"},
      {"HARKS.L", "Harkstone Insurance plc", stock, london, "GBp", 1,
       {4470, 50, 12000, 100, 41, 2}, 380000, "Financial Services"},
      {"CUKEQ.L", "Corrin UK Equity Fund", fund, london, "GBP", 3,
       {15000, 50, 1500, 100, 34, 4, 2005}, 90000, ""},
      {"^CLN50", "London Fifty", index, london, "GBP", 2, {200000, 45, 800, 100, 0, 0}},
      {"RHNWK.F", "Rhenwerk AG", stock, frankfurt, "EUR", 2,
       {5230, 65, 12000, 110, 28, 1}, 310000, "Industrials"},
      {"ALPTC.F", "Alptechnik SE", stock, frankfurt, "EUR", 2,
       {2890, 100, 16000, 120, 11, 1, 1999}, 180000, "Technology"},
      {"NORDC.F", "Nordlicht Chemie AG", stock, frankfurt, "EUR", 2,
       {4400, 55, 12000, 110, 36, 1}, 290000, "Basic Materials"},
      {"0417.T", "Hoshimori Electric Co., Ltd.", stock, tokyo, "JPY", 0,
       {1420, 60, 14000, 110, 15, 2}, 900000, "Technology"},
      {"0582.T", "Minakaze Motor Co., Ltd.", stock, tokyo, "JPY", 0,
       {1180, 50, 13000, 110, 22, 2}, 1600000, "Consumer Cyclical"},
      {"0736.T", "Aokuni Foods Co., Ltd.", stock, tokyo, "JPY", 0,
       {2050, 40, 9000, 70, 17, 2}, 400000, "Consumer Defensive"},
      {"^CTK80", "Tokyo Eighty", index, tokyo, "JPY", 2, {1500000, 40, 800, 100, 0, 0}},
  };
  // clang-format on
}

}  // namespace

std::string Instrument::noiseKey() const {
  return kind != InstrumentKind::currencyPair ? symbol
         : isInversePair()                    ? currency + baseCurrency
                                              : baseCurrency + currency;
}

bool Instrument::isInversePair() const {
  return kind == InstrumentKind::currencyPair && currency < baseCurrency;
}

const std::vector<Instrument>& listedInstruments() {
  static const std::vector<Instrument> instruments = makeListedInstruments();
  return instruments;
}

std::optional<Instrument> instrumentNamed(std::string_view symbol) {
  const auto& listed = listedInstruments();
  const auto found = std::ranges::find(listed, symbol, &Instrument::symbol);
  if (found != listed.end()) {
    return *found;
  }
  if (!symbol.ends_with(pairSuffix)) {
    return std::nullopt;
  }
  const std::string_view codes = symbol.substr(0, symbol.size() - pairSuffix.size());
  auto pair = codes.size() == 6   ? currencyPair(codes.substr(0, 3), codes.substr(3))
              : codes.size() == 3 ? currencyPair("USD", codes)
                                  : std::nullopt;
  if (pair) {
    pair->symbol = symbol;
  }
  return pair;
}

std::optional<Instrument> currencyPair(std::string_view base, std::string_view quote) {
  if (base == quote || !hasRate(base) || !hasRate(quote)) {
    return std::nullopt;
  }
  const std::string codes = std::string(base) + std::string(quote);
  return Instrument{.symbol = codes + std::string(pairSuffix),
                    .name = std::string(base) + "/" + std::string(quote),
                    .kind = InstrumentKind::currencyPair,
                    .exchange = currencies,
                    .currency = std::string(quote),
                    .decimals = rateDecimals(base, quote),
                    .baseCurrency = std::string(base)};
}

}  // namespace corvane::samplemarket
