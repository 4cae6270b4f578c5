// libFuzzer's way into one target, ZEMBRASTEL_FUZZ_TARGET.
#include "targets.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zembrastel::fuzz::ZEMBRASTEL_FUZZ_TARGET({reinterpret_cast<const char*>(data), size});
    return 0;
}
