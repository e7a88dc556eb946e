// A station that runs for months: each line of its input is a part to be looked at. When the head or its cable fails, the station says
// so, opens the head anew until that succeeds, and looks at the same part again.
//   station 192.168.0.10
#include <chrono>
#include <fringix/fringix.hpp>
#include <iostream>
#include <thread>

static fringix::Device openPatiently(const std::string& address) {
  for (;;) {
    try {
      fringix::Device head(address);
      std::cerr << address << ": connected" << std::endl;
      return head;
    } catch (const fringix::Error&) {
      std::this_thread::sleep_for(std::chrono::seconds(1));
    }
  }
}

static void inspect(const fringix::Device& head, const std::string& part) {
  const fringix::Image picture = head.liveImage();
  const std::size_t middle = std::size_t{picture.height / 2} * picture.width + picture.width / 2;
  std::cout << part << ": level " << int{picture.pixels[middle]} << " in the middle" << std::endl;
}

static void inspectInTheEnd(fringix::Device& head, const std::string& address, const std::string& part) {
  for (;;) {
    try {
      return inspect(head, part);
    } catch (const fringix::Error& error) {  // the session is over: nothing reconnects by itself
      std::cerr << address << ": " << error.what() << ", connecting again" << std::endl;
      std::this_thread::sleep_for(std::chrono::seconds(1));  // a head that is there and fails is not asked without a pause
      head = openPatiently(address);
    }
  }
}

int main(int argc, char** argv) {
  const std::string address = argc > 1 ? argv[1] : "127.0.0.2";
  fringix::Device head = openPatiently(address);
  for (std::string part; std::cin >> part;) inspectInTheEnd(head, address, part);
  return 0;
}
