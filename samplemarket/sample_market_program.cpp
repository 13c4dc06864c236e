// Serves the sample market until it is told to stop.

#include <pthread.h>
#include <signal.h>
#include <cmath>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <optional>
#include <span>
#include <string_view>

#include "samplemarket/prices/instruments.h"
#include "samplemarket/sample_market.h"

namespace {

using corvane::SampleMarketOptions;

constexpr std::string_view help =
    R"(Usage: sample-market [--port N] [--fault-probability P] [--seed N]

Serves quotes, charts and search about an invented market on the loopback
interface, prints the address, and runs until it is interrupted.

  --port N               listen on this port (1 to 65535); without it, or with 0,
                         on any free one
  --fault-probability P  let this part of all requests fail at random, from 0 to 1:
                         slow answers, dropped connections, errors, broken JSON
  --seed N               draw other faults; the same number draws the same ones
  --list                 print the symbols and stop
  --help                 print this text and stop

Try, with the address that it prints:

  curl 'http://127.0.0.1:PORT/v1/finance/search?q=corrin'
  curl 'http://127.0.0.1:PORT/v8/finance/chart/CASTR?period1=0&period2=2000000000&interval=1mo&events=split|div'

Details (/v7/finance/quote) want a cookie, which the page /%20 sets, and the crumb
of /v1/test/getcrumb.
)";

template <typename Number>
std::optional<Number> numberIn(std::string_view text, Number least, Number greatest) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isRead = error == std::errc() && end == text.data() + text.size();
  return isRead && value >= least && value <= greatest ? std::optional(value) : std::nullopt;
}

/// Sets the option that `name` and `value` tell. False where they tell none.
bool setOption(SampleMarketOptions& options, std::string_view name, std::string_view value) {
  if (name == "--port") {
    const auto port = numberIn<int>(value, 0, 65535);
    options.port = port.value_or(0);
    return port.has_value();
  }
  if (name == "--fault-probability") {
    const auto probability = numberIn<double>(value, 0, 1);
    options.faultsPerThousand = static_cast<int>(std::lround(probability.value_or(0) * 1000));
    return probability.has_value();
  }
  if (name == "--seed") {
    const auto seed = numberIn<std::uint64_t>(value, 0, UINT64_MAX);
    options.faultSeed = seed.value_or(0);
    return seed.has_value();
  }
  return false;
}

void printInstruments() {
  for (const auto& instrument : corvane::samplemarket::listedInstruments()) {
    std::cout << instrument.symbol << '\t' << instrument.name << '\t'
              << corvane::samplemarket::exchange(instrument.exchange).fullName << '\t'
              << instrument.currency << '\n';
  }
}

/// Blocks the signals that end the program, here and in threads to come, and returns their set.
sigset_t holdEndingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

}  // namespace

int main(int count, char** values) {
  const std::span<char*> arguments(values + 1, static_cast<std::size_t>(count - 1));
  SampleMarketOptions options;
  for (std::size_t i = 0; i < arguments.size(); i += 2) {
    const std::string_view name = arguments[i];
    if (name == "--help" || name == "-h") {
      std::cout << help;
      return 0;
    }
    if (name == "--list") {
      printInstruments();
      return 0;
    }
    if (i + 1 == arguments.size() || !setOption(options, name, arguments[i + 1])) {
      std::cerr << "sample-market: what is meant by " << name
                << (i + 1 < arguments.size() ? std::string(" ") + arguments[i + 1] : "")
                << "? See sample-market --help.\n";
      return 2;
    }
  }
  const sigset_t signals = holdEndingSignals();
  try {
    const corvane::SampleMarket market(options);
    std::cout << market.baseURL() << std::endl;
    int received = 0;
    sigwait(&signals, &received);
  } catch (const corvane::SampleMarketError& error) {
    std::cerr << "sample-market: " << error.text << '\n';
    return 1;
  }
  return 0;
}
