// A text stream of the host.
#pragma once

#include <string_view>

class aio_ostream {
public:
  virtual ~aio_ostream() = default;
  virtual void write(std::string_view text) = 0;
};
