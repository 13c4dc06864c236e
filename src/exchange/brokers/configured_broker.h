// A broker whose configuration is kept in the user's settings from one file to the next.
#pragma once

#include <cassert>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "exchange/brokers/import_export_broker.h"
#include "platform/async/dispatch_queue.h"
#include "platform/data/json.h"
#include "platform/system/log.h"
#include "platform/system/user_defaults.h"

namespace corvane {

/// The configuration of an ImportBroker or an ExportBroker (`Role`): read from the settings when
/// the broker is made, and written back when it goes. `Configuration` has `JSONValue json() const`
/// and `static Configuration fromJSON(const JSONValue&, const Configuration& defaults)`, which
/// throws JSONError.
///
/// Setting it to an equal value does nothing. Otherwise, on the main queue and after the present
/// call has finished: applyConfiguration(), the update of the accessory, didChangeConfiguration.
template <typename Role, typename Configuration>
class ConfiguredBroker
    : public Role,
      public std::enable_shared_from_this<ConfiguredBroker<Role, Configuration>> {
 public:
  [[nodiscard]] ConfigurationPointer configuration() const final {
    const std::lock_guard lock(mutex_);
    return configuration_;
  }

  /// `configuration` is of the type `Configuration`.
  void setConfiguration(ConfigurationPointer configuration) final {
    auto own = std::dynamic_pointer_cast<const Configuration>(configuration);
    assert(own != nullptr && "a broker has configurations of its own type");
    {
      const std::lock_guard lock(mutex_);
      if (*own == *configuration_) {
        return;
      }
      configuration_ = std::move(own);
    }
    DispatchQueue::main()->async([weak = this->weak_from_this()] {
      if (const auto self = weak.lock()) {
        self->configurationDidChange();
      }
    });
  }

  /// The configuration with all its settings.
  [[nodiscard]] Configuration settings() const {
    const std::lock_guard lock(mutex_);
    return *configuration_;
  }

  /// Sets the configuration to what `change(Configuration&)` makes of it.
  template <typename Change>
  void changeSettings(Change change) {
    Configuration changedSettings = settings();
    change(changedSettings);
    setConfiguration(std::make_shared<const Configuration>(std::move(changedSettings)));
  }

  [[nodiscard]] const std::string& configurationUserDefaultsKey() const { return key_; }

 protected:
  /// `defaults` may be null: then nothing is kept. Otherwise it outlives the broker.
  ConfiguredBroker(UserDefaults* defaults, std::string key, const Configuration& initial)
      : userDefaults_(defaults),
        key_(std::move(key)),
        configuration_(std::make_shared<const Configuration>(stored(initial))) {}

  ~ConfiguredBroker() override {
    if (userDefaults_ == nullptr) {
      return;
    }
    try {
      userDefaults_->set(key_, configuration_->json().text());
    } catch (const Error& error) {
      Log::write("Erorr while persisting configuration: ", error);
    }
  }

  /// Makes the formatters and the like agree with settings(). Main queue. The constructor of the
  /// broker calls it too.
  virtual void applyConfiguration() = 0;
  /// Shows the configuration in the accessory, if there is one. Main queue.
  virtual void updateAccessory() = 0;

 private:
  [[nodiscard]] Configuration stored(const Configuration& initial) const {
    const auto text = userDefaults_ == nullptr ? std::nullopt : userDefaults_->string(key_);
    if (text) {
      try {
        return Configuration::fromJSON(JSONValue::parse(*text), initial);
      } catch (const Error&) {
        // Settings of another version of the program, or damaged ones.
      }
    }
    return initial;
  }

  void configurationDidChange() {
    applyConfiguration();
    updateAccessory();
    if (this->didChangeConfiguration) {
      this->didChangeConfiguration(configuration());
    }
  }

  UserDefaults* const userDefaults_;
  const std::string key_;
  mutable std::mutex mutex_;  ///< the job writes the delimiter of the file it has read
  std::shared_ptr<const Configuration> configuration_;
};

}  // namespace corvane
