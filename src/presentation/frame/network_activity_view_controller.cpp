#include "presentation/frame/network_activity_view_controller.h"

#include <algorithm>
#include <utility>

#include "platform/text/unicode/utf8.h"

namespace corvane {

void NetworkActivityViewController::viewDidLoad() {
  requestTextView.isMonospaced = true;
  responseTextView.isMonospaced = true;
  clearActivity();
  startMonitoring();
}

void NetworkActivityViewController::viewWillAppear() {
  startMonitoring();
}

void NetworkActivityViewController::viewDidDisappear() {
  stopMonitoring();
  clearActivity();
}

void NetworkActivityViewController::startMonitoring() {
  if (activityObservation_) {
    return;
  }
  // Both end with this object, and neither runs but on the main queue.
  activityObservation_ = NotificationCenter::defaultCenter().addObserver(
      NetworkActivityMonitor::notificationName, nullptr,
      [this](const NetworkActivityMonitor::News& news) { receive(news); }, DispatchQueue::main());
  pruningTimer_ = Timer::scheduled(pruningInterval * std::chrono::seconds(1), true,
                                   [this](Timer&) { prune(); });
}

void NetworkActivityViewController::stopMonitoring() {
  activityObservation_.reset();
  if (pruningTimer_ != nullptr) {
    pruningTimer_->invalidate();
    pruningTimer_.reset();
  }
}

void NetworkActivityViewController::clearActivity() {
  activityEntries_.clear();
  activityEntryIndexesByUUID_.clear();
  entryPopUpButton = {.items = {{"No activity."}}, .selectedIndex = 0, .isEnabled = false};
  requestTextView.text.clear();
  responseTextView.text.clear();
  tellChange();
}

void NetworkActivityViewController::selectEntry(std::size_t index) {
  if (index < activityEntries_.size()) {
    entryPopUpButton.selectedIndex = index;
    show(index);
    tellChange();
  }
}

void NetworkActivityViewController::receive(const NetworkActivityMonitor::News& news) {
  const auto known = activityEntryIndexesByUUID_.find(news.activity.uuid);
  const bool isNew = known == activityEntryIndexesByUUID_.end();
  ActivityEntry entry = isNew ? ActivityEntry{news.activity} : activityEntries_[known->second];
  if (news.requestURL) {
    entry.requestURL = news.requestURL;
  }
  if (news.responseData) {
    entry.responseData = news.responseData;
  }
  if (isNew) {
    appendEntry(std::move(entry));
  } else {
    activityEntries_[known->second] = std::move(entry);
    if (entryPopUpButton.selectedIndex == known->second) {
      show(known->second);
    }
  }
  tellChange();
}

void NetworkActivityViewController::appendEntry(ActivityEntry entry) {
  auto& popUp = entryPopUpButton;
  if (activityEntries_.empty()) {
    popUp = {};
  }
  const std::size_t index = activityEntries_.size();
  // The selection follows the newest entry unless the user has gone back to an older one.
  const bool isNewestSelected = index == 0 || popUp.selectedIndex == index - 1;
  popUp.items.push_back({dateFormatter.string(entry.activity.date) + " – " + entry.activity.name,
                         entry.activity.uuid});
  popUp.isEnabled = true;
  activityEntryIndexesByUUID_.emplace(entry.activity.uuid, index);
  activityEntries_.push_back(std::move(entry));
  if (isNewestSelected) {
    popUp.selectedIndex = index;
    show(index);
  }
}

void NetworkActivityViewController::show(std::size_t index) {
  const ActivityEntry& entry = activityEntries_[index];
  requestTextView.text = entry.requestURL.value_or("");
  const bool isText = entry.responseData && isUTF8(*entry.responseData);
  responseTextView.text = isText ? *entry.responseData : "";
}

void NetworkActivityViewController::prune(Date now) {
  const Date threshold = now - pruningRetention;
  const auto kept = std::ranges::find_if(
      activityEntries_, [&](const auto& entry) { return entry.activity.date > threshold; });
  if (kept == activityEntries_.end()) {
    clearActivity();
    return;
  }
  const auto removed = kept - activityEntries_.begin();
  if (removed == 0) {
    return;
  }
  auto& items = entryPopUpButton.items;
  activityEntries_.erase(activityEntries_.begin(), kept);
  items.erase(items.begin(), items.begin() + removed);
  activityEntryIndexesByUUID_.clear();
  for (std::size_t i = 0; i < activityEntries_.size(); ++i) {
    activityEntryIndexesByUUID_.emplace(activityEntries_[i].activity.uuid, i);
  }
  const auto count = static_cast<std::size_t>(removed);
  const std::size_t selected = entryPopUpButton.selectedIndex.value_or(0);
  entryPopUpButton.selectedIndex =
      selected >= count ? selected - count : activityEntries_.size() - 1;
  show(*entryPopUpButton.selectedIndex);
  tellChange();
}

void NetworkActivityViewController::tellChange() const {
  if (didChange) {
    didChange();
  }
}

}  // namespace corvane
