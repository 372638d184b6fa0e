/** @file host_service.h
 *  How the platform interface looks to the linker.
 *
 *  Every service of the host is a function and stays an undefined dynamic symbol of the library until the first call: no
 *  data but two weak counter blocks, no virtual tables and no addresses of services in tables.  A host may lack what is never
 *  called, and a symbol that the process defines earlier wins.
 */
#ifndef SHAREDANALYSIS_HOST_SERVICE_H
#define SHAREDANALYSIS_HOST_SERVICE_H

#define SA_HOST_SERVICE __attribute__((visibility("default")))

#endif
