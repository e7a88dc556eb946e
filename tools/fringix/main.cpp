#include "application.h"
#include "console/output.h"

int main(int argc, char** argv) {
  fringix::tool::prepareStandardStreams();
  return fringix::tool::run(argc, argv);
}
