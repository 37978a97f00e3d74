// Writes what an installation tells of the command line into a folder: manual pages and
// completions.
//
//   velscore_pages FOLDER DETAILS
//
// DETAILS is a folder that may hold a file NAME.roff with the prose of the command NAME.

#include <exception>
#include <iostream>

#include "cli/commandpages.h"

int main(int count, char** arguments)
{
    if (count != 3) {
        std::cerr << "velscore_pages FOLDER DETAILS\n";
        return 1;
    }
    try {
        MCVelscore_850::WritePages(arguments[1], arguments[2]);
    } catch (const std::exception& failure) {
        std::cerr << "velscore_pages: " << failure.what() << '\n';
        return 1;
    }
    return 0;
}
