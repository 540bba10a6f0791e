#include "Samples.h"

#include <Standard_Failure.hxx>

#include <exception>
#include <filesystem>
#include <iostream>

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::cerr << "Usage: tnmakesamples DIRECTORY\n";
        return 2;
    }
    try {
        std::filesystem::create_directories(std::filesystem::path(argv[1]) / "assembly");
        tnsamples::writeKernelSamples(argv[1]);
        tnsamples::writeMeshSamples(argv[1]);
    } catch (const std::exception &error) {
        std::cerr << error.what() << '\n';
        return 1;
    } catch (const Standard_Failure &failure) {
        std::cerr << failure << '\n';
        return 1;
    }
    return 0;
}
