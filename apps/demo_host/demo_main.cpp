#include <iostream>

#include "apps/demo_host/demo_run.h"

int main(int argc, char** argv) {
  return demo_host::runDemo({argv + 1, argv + argc}, std::cout, std::cerr);
}
