#include "app/jack/jack_program.hpp"

int main(int argc, char** argv) {
    return vanta::runJackProgram({argv + 1, argv + argc});
}
