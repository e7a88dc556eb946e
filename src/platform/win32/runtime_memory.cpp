// MinGW's runtime, which each DLL carries inside, sets memory aside for exceptions that are thrown when there is none left, and keeps it to
// the end of the process. A DLL may be unloaded and loaded again before.
namespace __gnu_cxx {  // NOLINT(bugprone-reserved-identifier): the runtime's own
void __freeres();      // NOLINT(bugprone-reserved-identifier)
}

namespace {

struct RuntimeMemory {
  ~RuntimeMemory() { __gnu_cxx::__freeres(); }
};

// Made first, so that it goes last.
[[gnu::init_priority(101)]] RuntimeMemory ofThisLibrary;

}  // namespace
