// Loading scripts into embedded servers, as a window asks for it.
#pragma once

#include "embedded/instance/instances.h"
#include "platform/data/scriptLoader.h"

namespace qrel {

class EmbeddedScriptLoader : public ScriptLoader {
 public:
  // The servers outlive it.
  explicit EmbeddedScriptLoader(EmbeddedServers& servers) : servers_(servers) {}
  std::vector<std::string> servers() const override { return servers_.list(); }
  std::vector<std::string> databases(const std::string& server) const override;
  ScriptLoadResult load(const ScriptLoadRequest& request, const ScriptLoadProgress& progress) override;

 private:
  EmbeddedServers& servers_;
};

}  // namespace qrel
