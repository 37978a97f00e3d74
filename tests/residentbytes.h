#ifndef VELSCORE_TESTS_RESIDENTBYTES_H
#define VELSCORE_TESTS_RESIDENTBYTES_H

#include <fstream>

#include <unistd.h>

namespace MCVelscore_850 {

/// The bytes of memory that this process takes.
inline long ResidentBytes()
{
    std::ifstream pages("/proc/self/statm");
    long whole = 0;
    long resident = 0;
    pages >> whole >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

}  // namespace MCVelscore_850

#endif
