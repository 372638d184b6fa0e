// A block of a superelastic alloy by one of its laws, in the dimensions that the name asks for.
#pragma once

#include "spx/impl/user/superelastic_solid.h"
#include "spx/impl/user/superelastic_wire.h"

namespace sa::user::alloy {

template <class Law>
SA_INLINE void run(const Block& b, const Law& m) {
  if (m.kind == Kind::uniaxial) {
    if (b.nshr == 1)
      uniaxial<true>(b, m);
    else
      uniaxial<false>(b, m);
  } else if (m.kind == Kind::planeStress) {
    superelastic<true, S31>(b, m);
  } else if (b.isSolid()) {
    superelastic<false, S33>(b, m);
  } else {
    superelastic<false, S31>(b, m);
  }
}

} // namespace sa::user::alloy
