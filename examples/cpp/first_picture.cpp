// Opens the head at an address and saves the camera's current picture as live.pgm.
//   first_picture 192.168.0.10
#include <fringix/fringix.hpp>
#include <fstream>
#include <iostream>

int main(int argc, char** argv) {
  try {
    const fringix::Device head(argc > 1 ? argv[1] : "127.0.0.2");
    const fringix::Image picture = head.liveImage();
    std::ofstream file("live.pgm", std::ios::binary);
    file << "P5 " << picture.width << ' ' << picture.height << " 255\n";
    for (const std::uint8_t pixel : picture.pixels) file.put(static_cast<char>(pixel));
    std::cout << "head " << head.key().serial << ": " << picture.width << " x " << picture.height << " pixels in live.pgm\n";
    return file.flush() ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
