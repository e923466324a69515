#include "app/window/app_program.hpp"

int main(int argc, char** argv) {
    return vanta::runAppProgram({argv + 1, argv + argc});
}
