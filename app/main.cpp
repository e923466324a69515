#include "cli/command_line.hpp"

int main(int argc, char** argv) {
    return vanta::runCommandLine({argv + 1, argv + argc});
}
