// Takes a picture with each of several heads at the same time, and goes on with the others when one fails.
//   several_heads 192.168.0.10 192.168.0.11
#include <fringix/fringix.hpp>
#include <future>
#include <iostream>
#include <numeric>

static double takePicture(const std::string& address) {
  const fringix::Device head(address);
  const fringix::Image picture = head.liveImage();
  return std::accumulate(picture.pixels.begin(), picture.pixels.end(), 0.0) / static_cast<double>(picture.pixels.size());
}

int main(int argc, char** argv) {
  const std::vector<std::string> addresses(argv + 1, argv + argc);
  std::vector<std::future<double>> pictures;
  // Commands to one head run one after the other; different heads need a thread each to run side by side.
  for (const std::string& address : addresses) pictures.push_back(std::async(std::launch::async, takePicture, address));
  int failures = 0;
  for (std::size_t i = 0; i < addresses.size(); ++i) {
    try {
      std::cout << addresses[i] << ": brightness " << pictures[i].get() << '\n';
    } catch (const std::exception& error) {
      std::cerr << addresses[i] << ": " << error.what() << '\n';
      ++failures;
    }
  }
  return failures == 0 ? 0 : 1;
}
