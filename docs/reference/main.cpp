// Prints the command reference.
#include <exception>
#include <iostream>

#include "docs/reference/reference.h"

int main() {
    try {
        std::cout << reference::CommandReference();
        return std::cout.flush() ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
