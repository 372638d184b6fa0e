// Today's date.
#pragma once

#include "host_service.h"

#include <cstdint>

// Writes the date as the host prints it, cut to `capacity` characters and without a terminating zero; returns the number
// of characters written.  Any thread.
SA_HOST_SERVICE int32_t utl_getDate(char* text, int32_t capacity);
