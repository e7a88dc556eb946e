// Prints the triggers of a head as they come, until Enter is pressed.
//   watch_triggers 192.168.0.10
#include <fringix/fringix.hpp>
#include <iostream>

int main(int argc, char** argv) {
  try {
    const fringix::Device head(argc > 1 ? argv[1] : "127.0.0.2");
    // Runs on a thread of the session and should return soon: a real program hands the work on.
    const fringix::Subscription triggers(head, [](std::int32_t event, std::int64_t serial) {
      if (event == SLEVENT_TRIGGER) std::cout << "trigger of head " << serial << std::endl;
    });
    std::cout << "end with Enter" << std::endl;
    std::cin.get();
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
