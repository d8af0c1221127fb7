// vardel: the user's view of what the tracker recorded, and the tracker's scripting commands.
// See VardelCommand.h for the command line.

#include "tools/VardelCommand.h"

#include <cstdlib>
#include <ctime>
#include <iostream>

int main(int argc, char** argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    vardel::Date now { static_cast<double>(std::time(nullptr)) };
    return vardel::VardelCommand::run(arguments, std::cout, std::cerr, std::getenv, now);
}
