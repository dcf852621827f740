// kelo: the command-line face of libkelocmn.
#include "tools/kelo/command.h"

int main(int argc, char** argv) { return kelo::cli::Main(argc, argv); }
