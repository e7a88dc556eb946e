// On a busy machine Wine has come up without the driver that knows of networks, and stays so: what fails then says nothing of what is
// tested. tests/runner/run-suite looks for this line, and starts again.
#include <gtest/gtest.h>
#include <winsock2.h>

#include <iphlpapi.h>

#include <cstdio>

namespace fringix::test {

namespace {

bool hasNetworks() {
  DWORD count = 0;
  return GetNumberOfInterfaces(&count) == NO_ERROR && count > 0;
}

class NetworkDriver : public testing::Environment {
 public:
  void TearDown() override {
    if (testing::UnitTest::GetInstance()->Failed() && !hasNetworks()) std::puts("this machine has no networks");
  }
};

const testing::Environment* const networkDriver = testing::AddGlobalTestEnvironment(new NetworkDriver);

}  // namespace

}  // namespace fringix::test
