// Where the communicator of the process is found.
#pragma once

#include "dmpC_Communicator.h"

class SA_HOST_SERVICE dmpC_CommContainer {
public:
  static dmpC_Communicator& GetCommunicator();
};
