// A provider before another one that counts the queries and makes each wait, as a server behind a network does.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <thread>

#include "platform/data/connectionString.h"
#include "platform/data/provider.h"

namespace qrel {

struct SlowProviderState {
  std::chrono::microseconds latency{0};  // before each query
  std::atomic<std::size_t> queries = 0;
  std::atomic<std::size_t> connections = 0;
  std::size_t ahead = 8;  // connections for reading ahead
};

class SlowConnection : public ProviderConnection {
 public:
  SlowConnection(std::unique_ptr<ProviderConnection> inner, SlowProviderState& state)
      : inner_(std::move(inner)), state_(state) {}
  CommandResult execute(const CommandRequest& request) override {
    ++state_.queries;
    if (state_.latency.count() > 0) std::this_thread::sleep_for(state_.latency);
    return inner_->execute(request);
  }
  void interrupt() override { inner_->interrupt(); }

 private:
  std::unique_ptr<ProviderConnection> inner_;
  SlowProviderState& state_;
};

class SlowProvider : public Provider {
 public:
  SlowProvider(std::unique_ptr<Provider> inner, SlowProviderState& state) : inner_(std::move(inner)), state_(state) {}
  bool serves(const std::string& server) const override { return inner_->serves(server); }
  std::unique_ptr<ProviderConnection> open(const ConnectionString& connectionString) override {
    ++state_.connections;
    return std::make_unique<SlowConnection>(inner_->open(connectionString), state_);
  }
  std::size_t connectionsAhead() const override { return state_.ahead; }
  std::shared_ptr<void> holdState() override { return inner_->holdState(); }

 private:
  std::unique_ptr<Provider> inner_;
  SlowProviderState& state_;
};

}  // namespace qrel
