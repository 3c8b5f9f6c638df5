#include "app/Program.h"

int main(int argc, char** argv) {
    return orbisk::runProgram(argc, argv);
}
