#include <cstddef>
#include <cstdint>
#include <string>

#include "target.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    OpenFuzzHost();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t size) {
    static const FuzzTarget pTarget = FindFuzzTarget(FUZZ_TARGET);
    pTarget(std::string(reinterpret_cast<const char*>(pData), size));
    return 0;
}
