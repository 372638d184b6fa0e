// The transmitter behind the status channel.
#pragma once

#include "host_service.h"

class SA_HOST_SERVICE ipm_MessageTransmit {
public:
  static ipm_MessageTransmit& Instance();
  // Any thread.  Set at the end of the analysis: no record of importance follows.
  void SetClosing(bool closing);
};
