#include "application.h"

int main(int argc, char** argv) { return fringix::tool::run(argc, argv); }
