// Reads where it may not: shows that a test's program that does so fails, and says where.
#include <cstdint>

namespace {
volatile std::uintptr_t nobodysMemory = 16;
}

int main() { return *reinterpret_cast<const volatile char*>(nobodysMemory); }
