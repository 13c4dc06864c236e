// What is traded on the sample market. All names are invented.
//
//   Symbol      Name                               Exchange    Currency
//
//   CASTR       Castrelle Networks Inc.            New York    USD
//   HOLVK       Holverk Industries Inc.            New York    USD
//   NIMBR       Nimbria Software Inc.              New York    USD
//   OAKWN       Oakwyn Foods Company               New York    USD
//   PELLR       Pellarin Health Group              New York    USD
//   QUARO       Quarossa Semiconductors Inc.       New York    USD, since 2004
//   VESTM       Vestmere Bancorp                   New York    USD
//   ALLUS       Corrin Total America Fund          New York    USD, fund, since 2001
//   BNDUS       Corrin Bond Income Fund            New York    USD, fund, since 2003
//   ^CNY100     New York Hundred                   New York    USD, index
//   BOREA.TO    Borealind Railway Company          Toronto     CAD
//   MAPRK.TO    Maplerock Energy Ltd.              Toronto     CAD
//   TAMRK.TO    Tamrack Financial Group            Toronto     CAD
//   LAURV.TO    Laurenveil Pipelines Inc.          Toronto     CAD
//   KEEWA.TO    Keewana Gold Mines Ltd.            Toronto     CAD, since 1996
//   ALLCA.TO    Corrin Canadian Equity Fund        Toronto     CAD, fund, since 2002
//   CWRLD.TO    Corrin World Equity Fund           Toronto     CAD, fund, since 2006
//   ^CTO60      Toronto Sixty                      Toronto     CAD, index
//   THRAL.L     Thrale & Mossop plc                London      GBP
//   PENWY.L     Penwyth Utilities plc              London      GBP
//   SKERR.L     Skerrow Mining plc                 London      GBP
//   DUNVL.L     Dunvale Stores plc                 London      GBp
//   HARKS.L     Harkstone Insurance plc            London      GBp
//   CUKEQ.L     Corrin UK Equity Fund              London      GBP, fund, since 2005
//   ^CLN50      London Fifty                       London      GBP, index
//   RHNWK.F     Rhenwerk AG                        Frankfurt   EUR
//   ALPTC.F     Alptechnik SE                      Frankfurt   EUR, since 1999
//   NORDC.F     Nordlicht Chemie AG                Frankfurt   EUR
//   0417.T      Hoshimori Electric Co., Ltd.       Tokyo       JPY
//   0582.T      Minakaze Motor Co., Ltd.           Tokyo       JPY
//   0736.T      Aokuni Foods Co., Ltd.             Tokyo       JPY
//   ^CTK80      Tokyo Eighty                       Tokyo       JPY, index
//
// Where no year is told, prices begin in January 1990. GBp is the penny of London's prices, which
// ISO 4217 doesn't list and clients that go by that list refuse; the shares in GBP are not
// affected. The rates of any two currencies of ISO 4217 are traded too, around the clock on
// weekdays: "EURUSD=X" is the price of a euro in dollars, and "CAD=X" is short for "USDCAD=X".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "samplemarket/prices/exchange.h"

namespace corvane::samplemarket {

enum class InstrumentKind { stock, fund, index, currencyPair };

/// What of a listed instrument's prices is its own.
struct PriceCharacter {
  std::int64_t firstPrice = 0;            ///< in ticks, that is units of 10^-decimals
  std::int64_t yearlyGrowthPerMille = 0;  ///< that the price tends to, dividends not counted
  std::int64_t dailyDeviation = 0;        ///< of the instrument alone, in millionths
  std::int64_t marketPercent = 0;         ///< how much of its exchange's moves it follows
  std::int64_t yearlyDividendPerMille = 0;
  int dividendsPerYear = 0;
  std::int64_t firstYear = 1990;
};

struct Instrument {
  std::string symbol;
  std::string name;  ///< as the service writes it: with XML entities
  InstrumentKind kind = InstrumentKind::stock;
  ExchangeID exchange = ExchangeID::newYork;
  std::string currency;
  int decimals = 2;  ///< of a price
  PriceCharacter character = {};
  std::int64_t shares = 0;  ///< issued at first, in thousands; 0 for an index and for a pair
  std::string sector = {};
  std::string baseCurrency = {};  ///< of a pair, whose `currency` the price is in

  /// The key to all chance in the prices. A pair and its inverse have the same, so that one goes
  /// down when the other goes up.
  [[nodiscard]] std::string noiseKey() const;
  [[nodiscard]] bool isInversePair() const;
};

/// The listed instruments, in the order above.
[[nodiscard]] const std::vector<Instrument>& listedInstruments();

/// The listed instrument or the currency pair that `symbol` names.
[[nodiscard]] std::optional<Instrument> instrumentNamed(std::string_view symbol);

/// The pair of two different currencies of ISO 4217 with prices; none for others ("XXX").
[[nodiscard]] std::optional<Instrument> currencyPair(std::string_view base, std::string_view quote);

}  // namespace corvane::samplemarket
