#include "app/scope/scope_program.hpp"

int main(int argc, char** argv) {
    return vanta::runScopeProgram({argv + 1, argv + argc});
}
