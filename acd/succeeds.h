// Exceptions end where they arise: nothing is thrown across the boundary of the library.
#pragma once

namespace sa::acd {

// Runs the body; whether it came to its end.  What is to be done otherwise is done outside of the handler, where another
// exception could not be told from the first.
template <class Body>
bool succeeds(Body body) {
  try {
    body();
    return true;
  } catch (...) {
    return false;
  }
}

} // namespace sa::acd
