// Name and version of the host.
#pragma once

#include "host_service.h"

class SA_HOST_SERVICE utl_Version {
public:
  static const utl_Version& Instance();
  // Zero-terminated, valid as long as the process.  The optional part tells builds of one version apart.
  const char* Title(bool withOptionalPart) const;
};
