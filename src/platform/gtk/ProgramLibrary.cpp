// The whole program as a library, which the executable loads (Main.cpp beside).

#include "app/Program.h"

extern "C" __attribute__((visibility("default"))) int orbiskRunProgram(int argc, char** argv) {
    return orbisk::runProgram(argc, argv);
}
