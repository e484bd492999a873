#include "import/SharedFraction.h"

#include <new>
#include <sys/mman.h>

namespace orloview {

SharedFraction::SharedFraction() : fShared(nullptr) {
    void* memory =
        ::mmap(nullptr, sizeof *fShared, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory != MAP_FAILED)
        fShared = new (memory) std::atomic<double>(0.0);
}

SharedFraction::~SharedFraction() {
    if (fShared)
        ::munmap(fShared, sizeof *fShared);
}

void SharedFraction::set(double fraction) {
    if (fShared)
        fShared->store(fraction, std::memory_order_relaxed);
}

double SharedFraction::get() const {
    return fShared ? fShared->load(std::memory_order_relaxed) : 0.0;
}

} // namespace orloview
