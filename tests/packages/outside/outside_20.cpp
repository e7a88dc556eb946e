// Both wrappers, in C++20.
#include <exception>
#include <fringix/fringix.hpp>
#include <fringix/scan.hpp>
#include <iostream>

static_assert(__cplusplus >= 202002L, "this is to be compiled as C++20");

int main(int argc, char** argv) {
  try {
    const fringix::Device head(argc > 1 ? argv[1] : "127.0.0.2");
    const fringix::Image picture = head.liveImage();
    const std::int32_t pictures = fringix::scan::pictureCount(fringix::scan::defaultPlan(640));
    std::cout << "C++20: " << picture.width << " x " << picture.height << ", " << pictures << " pictures\n";
    return picture.pixels.size() == std::size_t{picture.width} * picture.height && pictures > 4 ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
