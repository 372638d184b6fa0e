// Feeds bytes to the owner as if another rank had sent them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sharedanalysis::test {

// The first byte of each message tells how it is made of the rest: see the source.  Whatever comes, the owner ends in order.
void receiveAnything(const uint8_t* data, std::size_t size);

} // namespace sharedanalysis::test
