// Large pages for large blocks.
#pragma once

#include <cstdint>

// Asks the system to back a block of new memory with large pages, where it has them and the block holds some: a picture
// has tens of thousands of small ones, and each costs a fault at its first touch.
void preferLargePages(void* block, std::int64_t bytes);
