// The window that shows what the program asks of the market-data service and what it is answered.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/controls/form_controls.h"
#include "marketdata/yahoo/network_activity_monitor.h"
#include "platform/async/notification_center.h"
#include "platform/async/timer.h"
#include "platform/text/formats/date_formatter.h"

namespace corvane {

/// The list of the requests of the last hour, and the one that is chosen, without any widget: a
/// window shows the fields, tells when it comes and goes, and calls selectEntry(). Entries are
/// gathered only while the window is open; closing it forgets them. Main queue only.
class NetworkActivityViewController {
 public:
  static constexpr double pruningInterval = 120;    ///< seconds between two sweeps of old entries
  static constexpr double pruningRetention = 3600;  ///< seconds for which an entry is kept

  using ActivityEntry = NetworkActivityMonitor::News;

  /// In the order of activityEntries(); "No activity." where there are none.
  PopUpButton<UUID> entryPopUpButton;
  TextView requestTextView;
  TextView responseTextView;
  /// Times in the list.
  DateFormatter dateFormatter{.timeStyle = DateFormatter::Style::mediumStyle};

  /// Called after every change of the fields above.
  std::function<void()> didChange;

  /// The window's life: made, about to be shown, closed.
  void viewDidLoad();
  void viewWillAppear();
  void viewDidDisappear();

  /// Empties the log. What the clear button does, too.
  void clearActivity();

  /// The user has chosen the entry at `index` of the list.
  void selectEntry(std::size_t index);

  /// Takes out the entries that are older than pruningRetention at `now`.
  void prune(Date now = Date::now());

  /// In order of first sight, oldest first.
  [[nodiscard]] const std::vector<ActivityEntry>& activityEntries() const {
    return activityEntries_;
  }

 private:
  void startMonitoring();
  void stopMonitoring();
  void receive(const NetworkActivityMonitor::News& news);
  void appendEntry(ActivityEntry entry);
  void show(std::size_t index);
  void tellChange() const;

  std::vector<ActivityEntry> activityEntries_;
  std::unordered_map<UUID, std::size_t> activityEntryIndexesByUUID_;
  Subscription activityObservation_;
  std::shared_ptr<Timer> pruningTimer_;
};

}  // namespace corvane
