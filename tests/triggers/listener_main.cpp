#include "triggers/listener.h"

int main(int, char** arguments) { return fringix::test::runListener(arguments[1]); }
