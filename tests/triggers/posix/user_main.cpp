// USER listen ADDRESS, or USER and the name of an attack: becomes this user, for good, and does that.
#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "triggers/listener.h"
#include "triggers/posix/strangers.h"

namespace {

bool become(unsigned user) {
  if (setgroups(0, nullptr) != 0 || setresgid(user, user, user) != 0 || setresuid(user, user, user) != 0) return false;
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // forgotten with the change
  prctl(PR_SET_DUMPABLE, 1);         // so that it sees its own descriptors in /proc
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3 || !become(static_cast<unsigned>(std::stoul(arguments[1])))) return 2;
  const std::string role = arguments[2];
  if (role == "listen" && count == 4) return fringix::test::runListener(arguments[3]);
  return fringix::test::attack(role) ? 0 : 2;
}
