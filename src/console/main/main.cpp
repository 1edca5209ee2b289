#include <iostream>

#include "console/commands.h"

int main(int argc, char** argv) { return qrel::runConsole(argc, argv, std::cout, std::cerr); }
