#ifndef LUMO_TESTS_CENTRE_CENTREPROGRAM_H
#define LUMO_TESTS_CENTRE_CENTREPROGRAM_H

#include "tests/support/Process.h"

#include <string>
#include <vector>

/// The real program with arguments.
inline std::vector<std::string> centreCommand(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), LUMO_CENTRE_PROGRAM);
    return arguments;
}

/// Waits for a line that ends with an address; empty when the program ended instead.
inline std::string servingAddress(Process& process)
{
    const std::string line = process.readLine();
    return line.substr(line.rfind(' ') + 1);
}

#endif
