// Several networks for one test: the host's network namespace, one for the heads, and cables between the two.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace fringix::test {

class Cable;

// What is wrong with a cable.
struct CableFault {
  std::function<bool(std::string_view frame, bool toHost)> loses;  // whether it loses an Ethernet frame; empty: none
  double bytesPerSecond = 0;                                       // that it carries at most; 0: as many as come
};

// Made in a process of its own, see inProcessWithNetworks(); that process then stands on the host's side.
class Networks {
 public:
  Networks();
  ~Networks();

  // A network interface `name` on either side, joined with the other; an address such as "10.1.0.1/24", or empty for none.
  void connect(const std::string& name, const std::string& hostAddress, const std::string& headsAddress, CableFault fault = {});

  // From now on frames to the heads' side of the network are lost, and none come from there.
  void takeDown(const std::string& name) const;
  void bringUp(const std::string& name) const;

  // What is opened by `action`, sockets for instance, stays on that side.
  void onTheHeadsSide(const std::function<void()>& action) const;

 private:
  int headsSide_;
  int hostSide_;
  std::vector<std::unique_ptr<Cable>> cables_;
};

enum class Verdict { passed, failed, notPermitted };

// Runs `body` in a child process that may make networks. What fails in it is printed.
Verdict inProcessWithNetworks(const std::function<void()>& body);

}  // namespace fringix::test
