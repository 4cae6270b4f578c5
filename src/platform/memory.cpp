#include "platform/memory.h"

#include <malloc.h>

namespace zembrastel {

void returnFreeMemory() { (void)::malloc_trim(0); }

} // namespace zembrastel
