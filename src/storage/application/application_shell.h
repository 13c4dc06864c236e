// What the application controller asks of the desktop around it.
#pragma once

#include <filesystem>
#include <string>

#include "core/market/quote_query.h"
#include "marketdata/chain/switchable_quote_provider.h"
#include "platform/error.h"

namespace corvane {

/// How the menus that belong to no document stand.
struct ApplicationMenuState {
  /// Whether the menu of data sources and its commands can be reached at all.
  bool showsDataSources = false;
  bool showsNetworkActivity = false;
  SwitchableQuoteProvider::DataSource checkedDataSource =
      SwitchableQuoteProvider::DataSource::sourceAndCache;
  PriceAdjustment checkedPriceAdjustment = PriceAdjustment::adjustedForSplits;

  friend bool operator==(const ApplicationMenuState&, const ApplicationMenuState&) = default;
};

/// A desktop, as seen by the application controller. Main queue only.
class ApplicationShell {
 public:
  virtual ~ApplicationShell() = default;

  /// Brings check marks and hidden items in line.
  virtual void applyMenuState(const ApplicationMenuState& state) = 0;

  /// Shows a text and waits until the user has seen it.
  virtual void runAlert(const std::string& messageText, const std::string& informativeText) = 0;
  virtual void presentError(const Error& error) = 0;

  /// Lets the system show a file with the program that it has for it.
  virtual void openExternally(const std::filesystem::path& file) = 0;
  /// Shows a page in the program's own window, which is used again where it is still there. Gives
  /// up on a page that has not loaded within `timeoutSeconds`.
  virtual void showWebDocument(const std::filesystem::path& file, double timeoutSeconds) = 0;

  /// The log of requests: behind all windows at a start, in front on demand.
  virtual void showNetworkActivityWindow(bool inFront) = 0;
  virtual void closeNetworkActivityWindow() = 0;
  [[nodiscard]] virtual bool isNetworkActivityWindowVisible() const = 0;
  /// Empties the log, where there is one.
  virtual void clearActivity() = 0;
};

}  // namespace corvane
